#include "framework/qt/list_keys.h"

#include <array>

namespace permora::qt {
namespace {

struct KeyCode {
    int key;
    unsigned int virtualKey;
};
// clang-format off
constexpr std::array<KeyCode, 17> kKeyCodes{{
    {Qt::Key_Backspace, 0x08}, {Qt::Key_Tab,    0x09}, {Qt::Key_Return,   0x0D}, {Qt::Key_Enter, 0x0D},
    {Qt::Key_Escape,    0x1B}, {Qt::Key_Space,  0x20}, {Qt::Key_PageUp,   0x21}, {Qt::Key_PageDown, 0x22},
    {Qt::Key_End,       0x23}, {Qt::Key_Home,   0x24}, {Qt::Key_Left,     0x25}, {Qt::Key_Up,    0x26},
    {Qt::Key_Right,     0x27}, {Qt::Key_Down,   0x28}, {Qt::Key_Insert,   0x2D}, {Qt::Key_Delete, 0x2E},
    {Qt::Key_Menu,      0x5D},
}};
struct KeyStep {
    int key;
    ListStep step;
};
constexpr std::array<KeyStep, 8> kKeySteps{{
    {Qt::Key_Up,     ListStep::kUp},     {Qt::Key_Down,     ListStep::kDown},
    {Qt::Key_Left,   ListStep::kLeft},   {Qt::Key_Right,    ListStep::kRight},
    {Qt::Key_PageUp, ListStep::kPageUp}, {Qt::Key_PageDown, ListStep::kPageDown},
    {Qt::Key_Home,   ListStep::kHome},   {Qt::Key_End,      ListStep::kEnd},
}};
// clang-format on

}  // namespace

unsigned int VirtualKeyOf(int key) {
    // Digits and letters have the codes of their ASCII characters, in both systems.
    if ((key >= Qt::Key_0 && key <= Qt::Key_9) || (key >= Qt::Key_A && key <= Qt::Key_Z))
        return static_cast<unsigned int>(key);
    constexpr unsigned int kF1 = 0x70;
    if (key >= Qt::Key_F1 && key <= Qt::Key_F24) return kF1 + static_cast<unsigned int>(key - Qt::Key_F1);
    for (const KeyCode& each : kKeyCodes)
        if (each.key == key) return each.virtualKey;
    return 0;
}

int KeyOf(unsigned int virtualKey) {
    const int code = static_cast<int>(virtualKey);
    if ((code >= Qt::Key_0 && code <= Qt::Key_9) || (code >= Qt::Key_A && code <= Qt::Key_Z)) return code;
    constexpr int kF1 = 0x70;
    constexpr int kF24 = 0x87;
    if (code >= kF1 && code <= kF24) return Qt::Key_F1 + code - kF1;
    for (const KeyCode& each : kKeyCodes)
        if (each.virtualKey == virtualKey) return each.key;
    return Qt::Key_unknown;
}

std::optional<ListStep> StepOf(int key, Qt::LayoutDirection direction) {
    if (direction == Qt::RightToLeft && key == Qt::Key_Left) return ListStep::kRight;
    if (direction == Qt::RightToLeft && key == Qt::Key_Right) return ListStep::kLeft;
    for (const KeyStep& each : kKeySteps)
        if (each.key == key) return each.step;
    return std::nullopt;
}

SelectMode ModeOf(Qt::KeyboardModifiers modifiers) {
    const bool control = modifiers.testFlag(Qt::ControlModifier);
    if (modifiers.testFlag(Qt::ShiftModifier)) return control ? SelectMode::kAddRange : SelectMode::kExtend;
    return control ? SelectMode::kToggle : SelectMode::kReplace;
}

}  // namespace permora::qt
