// The numbers of test_resources.rc, for the resource compiler too.
#pragma once

#define IDC_STATIC (-1)

// All kinds of controls.
#define IDD_CONTROLS 101
#define IDC_NAME 1001
#define IDC_INHERIT 1002
#define IDC_FIRST_LETTER 1010
#define IDC_SECOND_LETTER 1011
#define IDC_FIRST_DIGIT 1020
#define IDC_SECOND_DIGIT 1021
#define IDC_SCOPE 1030
#define IDC_ENTRIES 1040
#define IDC_MORE 1050
#define IDC_HIDDEN_BUTTON 1051

// Neither buttons nor close box.
#define IDD_PROGRESS 102
#define IDC_PROGRESS 1060

// Buttons of its own numbers, and no default button.
#define IDD_PICKER 103
#define IDC_ACCOUNT 1070
#define IDC_PICKER_OK 1071

// Pages. The third has a caption from the strings.
#define IDD_FIRST_PAGE 201
#define IDD_SECOND_PAGE 202
#define IDD_THIRD_PAGE 203
#define IDC_FIRST_EDIT 1080
#define IDC_SECOND_EDIT 1081
#define IDC_THIRD_EDIT 1082
#define IDS_THIRD_TAB 301
