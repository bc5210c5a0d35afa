#include "app/help_topics.h"

#include <algorithm>
#include <array>

#include "resources/resource_ids.h"

namespace permora {
namespace {

constexpr auto kTopics = std::to_array<HelpTopic>({
    {IDD_ABOUT, kHelpContents},
    {IDD_HELP, kHelpContents},
    {IDD_ADDRESS_BAR, "browser.html#going"},  // a part of the main window, whose help is the whole
    {IDD_RENAME, "browser.html#files"},
    {IDD_NEW_FOLDER, "browser.html#files"},
    {IDD_ATTRIBUTES, "browser.html#attributes"},
    {IDD_FILE_PROPERTIES, "browser.html#properties"},
    {IDD_FOLDER_PROPERTIES, "browser.html#properties"},
    {IDD_LINK_PROPERTIES, "browser.html#properties"},
    {IDD_DRIVE_PROPERTIES, "browser.html#properties"},
    {IDD_FIND, "browser.html#find"},
    {IDD_REPORT, "browser.html#report"},
    {IDD_RESULTS_BAR, "browser.html#results"},
    {IDD_PERMISSIONS_PAGE, "editor.html#permissions"},
    {IDD_SELECTION_NOTICE, "editor.html"},
    {IDD_PERMISSION_ENTRY, "editor.html#entry"},
    {IDD_ACCOUNT_PICKER, "editor.html#account"},
    {IDD_OWNER_PAGE, "editor.html#owner"},
    {IDD_EFFECTIVE_PERMISSIONS_PAGE, "editor.html#effective"},
    {IDD_RIGHTS_EXPLANATION, "editor.html#why"},
    {IDD_COMPARE_ACCOUNTS, "editor.html#compare"},
    {IDD_PREVIEW, "editor.html#preview"},
    {IDD_PREVIEW_QUESTION, "editor.html#preview"},
    {IDD_APPLY_TO_TREE, "editor.html#tree"},
    {IDD_CHANGE_RESULTS, "editor.html#results"},
    {IDD_UNDO, "editor.html#undo"},
    {IDD_HISTORY, "editor.html#undo"},
    {IDD_SHARE_PERMISSIONS_PAGE, "shares.html#permissions"},
    {IDD_NEW_SHARE, "shares.html#new"},
    {IDD_WIZARD_TASK_PAGE, "wizard.html"},
    {IDD_WIZARD_PERMISSIONS_PAGE, "wizard.html#permissions"},
    {IDD_WIZARD_DELETION_PAGE, "wizard.html#deletion"},
    {IDD_SECURE_DELETION, "deletion.html"},
    {IDD_SETTINGS, "settings.html"},
});

}  // namespace

std::span<const HelpTopic> HelpTopics() {
    return kTopics;
}

std::string HelpPlaceOf(unsigned int templateId) {
    const auto topic = std::ranges::find(kTopics, templateId, &HelpTopic::templateId);
    return topic != kTopics.end() ? topic->place : kHelpContents;
}

}  // namespace permora
