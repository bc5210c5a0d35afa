#include "framework/qt/selection_request.h"

#include <xcb/xcb.h>

#include <QClipboard>
#include <QGuiApplication>
#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <thread>
#include <utility>

#include "framework/qt/busy_windows.h"

namespace permora::qt {
namespace {

using namespace std::chrono_literals;

constexpr qsizetype kMostForms = 16'384;

struct ReplyDeleter {
    void operator()(void* reply) const { std::free(reply); }
};
template <class Kind>
using Reply = std::unique_ptr<Kind, ReplyDeleter>;

xcb_connection_t* Connection() {
    const auto* x11 =
        qGuiApp != nullptr ? qGuiApp->nativeInterface<QNativeInterface::QX11Application>() : nullptr;
    return x11 != nullptr ? x11->connection() : nullptr;
}

xcb_atom_t AtomOf(const QByteArray& name) {
    xcb_connection_t* connection = Connection();
    const Reply<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(
        connection, xcb_intern_atom(connection, 0, static_cast<std::uint16_t>(name.size()), name.data()),
        nullptr));
    return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

// Never shown: it receives the answer.
xcb_window_t MakeWindow(xcb_connection_t* connection) {
    const xcb_window_t window = xcb_generate_id(connection);
    const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root;
    const std::uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_create_window(connection, XCB_COPY_FROM_PARENT, window, root, -1, -1, 1, 1, 0,
                      XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK, &events);
    return window;
}

}  // namespace

bool HasSelections() {
    return Connection() != nullptr;
}

SelectionRequest::SelectionRequest(SelectionKind kind, const QByteArray& form, qsizetype mostBytes,
                                   std::function<void()> function)
    : connection(Connection()), limit(mostBytes), whenEnded(std::move(function)) {
    if (connection == nullptr) {
        state = State::kRefused;
        return;
    }
    window = MakeWindow(connection);
    property = AtomOf("PERMORA_SELECTION");
    const xcb_atom_t selection =
        kind == SelectionKind::kClipboard ? AtomOf("CLIPBOARD") : xcb_atom_t{XCB_ATOM_PRIMARY};
    QCoreApplication::instance()->installNativeEventFilter(this);
    xcb_convert_selection(connection, window, selection, AtomOf(form), property, XCB_CURRENT_TIME);
    xcb_flush(connection);
    sinceLastSign.start();
}

// Later data goes to a destroyed window.
SelectionRequest::~SelectionRequest() {
    if (window == 0) return;
    xcb_destroy_window(connection, window);
    xcb_flush(connection);
}

SelectionRequest::State SelectionRequest::Await(const std::unique_ptr<SelectionRequest>& request) {
    constexpr std::chrono::milliseconds kBetweenPaintings = 2ms;
    constexpr std::chrono::milliseconds kPatience = 3s;
    constexpr std::chrono::milliseconds kLongest = 60s;  // for an owner that answers in small pieces
    if (request->state != State::kWaiting) return request->state;
    request->sinceLastSign.start();
    QElapsedTimer sinceStart;
    sinceStart.start();
    ServeBeforeInputUntil([&] {
        if (request->state != State::kWaiting) return true;
        std::this_thread::sleep_for(kBetweenPaintings);
        return request->sinceLastSign.hasExpired(kPatience.count()) ||
               sinceStart.hasExpired(kLongest.count());
    });
    if (request->state == State::kWaiting) DropInput();
    return request->state;
}

bool SelectionRequest::nativeEventFilter(const QByteArray& eventType, void* message, qintptr* /*result*/) {
    if (eventType != "xcb_generic_event_t" || state != State::kWaiting) return false;
    constexpr std::uint8_t kSentByAnother = 0x80;
    const auto* event = static_cast<const xcb_generic_event_t*>(message);
    switch (event->response_type & ~kSentByAnother) {
        case XCB_SELECTION_NOTIFY:
            return Take(*static_cast<const xcb_selection_notify_event_t*>(message));
        case XCB_PROPERTY_NOTIFY:
            return Take(*static_cast<const xcb_property_notify_event_t*>(message));
        default:
            return false;
    }
}

bool SelectionRequest::Take(const xcb_selection_notify_event_t& event) {
    if (event.requestor != window || comesInPieces) return false;
    if (event.property == property)
        TakeBytes();
    else
        End(State::kRefused);
    return true;
}

// The next piece has arrived.
bool SelectionRequest::Take(const xcb_property_notify_event_t& event) {
    if (event.window != window) return false;
    if (comesInPieces && event.atom == property && event.state == XCB_PROPERTY_NEW_VALUE) TakeBytes();
    return true;
}

void SelectionRequest::TakeBytes() {
    constexpr qsizetype kUnit = 4;
    sinceLastSign.start();
    const auto room = static_cast<std::uint32_t>((limit - bytes.size()) / kUnit + 1);
    const Reply<xcb_get_property_reply_t> reply(xcb_get_property_reply(
        connection, xcb_get_property(connection, 1, window, property, XCB_GET_PROPERTY_TYPE_ANY, 0, room),
        nullptr));
    if (!reply) return End(State::kRefused);
    if (!comesInPieces && reply->type == AtomOf("INCR")) {
        comesInPieces = true;  // what was there said so, and has been taken away
        return;
    }
    const qsizetype length = xcb_get_property_value_length(reply.get());
    if (reply->bytes_after > 0 || length > limit - bytes.size()) return End(State::kRefused);
    bytes.append(static_cast<const char*>(xcb_get_property_value(reply.get())), length);
    if (!comesInPieces || length == 0) End(State::kGiven);
}

void SelectionRequest::End(State newState) {
    state = newState;
    if (state == State::kRefused) bytes.clear();
    if (whenEnded) whenEnded();
}

ClipboardOffer::ClipboardOffer() {
    const QClipboard* clipboard = QGuiApplication::clipboard();
    whenChanged = QObject::connect(clipboard, &QClipboard::dataChanged, clipboard, [this] { Ask(); });
    Ask();
}

ClipboardOffer::~ClipboardOffer() {
    QObject::disconnect(whenChanged);
}

bool ClipboardOffer::Has(const QByteArray& form) const {
    if (forms.empty()) return false;
    if (!atoms.contains(form)) atoms.insert(form, AtomOf(form));
    return std::ranges::find(forms, atoms[form]) != forms.end();
}

bool ClipboardOffer::Await() const {
    return SelectionRequest::Await(request) != SelectionRequest::State::kWaiting;
}

void ClipboardOffer::Ask() {
    forms.clear();
    constexpr auto kMostBytes = static_cast<qsizetype>(kMostForms * sizeof(xcb_atom_t));
    request = std::make_unique<SelectionRequest>(SelectionKind::kClipboard, "TARGETS", kMostBytes,
                                                 [this] { TakeForms(); });
}

void ClipboardOffer::TakeForms() {
    const QByteArray& bytes = request->Bytes();
    forms.resize(static_cast<std::size_t>(bytes.size()) / sizeof(xcb_atom_t));
    if (!forms.empty()) std::memcpy(forms.data(), bytes.data(), forms.size() * sizeof(xcb_atom_t));
}

}  // namespace permora::qt
