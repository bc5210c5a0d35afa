// The numbers of all resources, for the resource script and for the program. Nothing but #defines stands
// here, since the resource compiler reads this file as well.
#pragma once

// Strings, menus, accelerators, the toolbar and the icon that belong to the frame window share its number.
#define IDR_MAIN_FRAME 120
#define IDR_CONTEXT_MENUS 189

// The same of a window of results.
#define IDR_RESULTS 121
#define IDR_RESULTS_CONTEXT 190

// Icons: drives and shares.
#define IDI_DRIVE_REMOVABLE 140
#define IDI_DRIVE_FIXED 142
#define IDI_DRIVE_CDROM 144
#define IDI_DRIVE_PROTECTED 246
#define IDI_DRIVE_NETWORK 252
#define IDI_SHARED_FOLDER 258

// Icons: folders and the classes of files.
#define IDI_FILE 146
#define IDI_FOLDER 148
#define IDI_FILE_ZIP 229
#define IDI_FILE_PROGRAM 230
#define IDI_FILE_WEB_PAGE 231
#define IDI_FILE_PICTURE 232
#define IDI_FILE_MEDIA 233
#define IDI_FILE_REGISTRY 234
#define IDI_FILE_LIBRARY 235
#define IDI_FILE_CABINET 236
#define IDI_FILE_DOCUMENT 237
#define IDI_FILE_SPREADSHEET 238
#define IDI_FILE_RAR 239
#define IDI_FILE_HELP 240

// Icons: toolbar buttons.
#define IDI_BACK 172
#define IDI_FORWARD 174
#define IDI_REFRESH 175
#define IDI_ROOT 176
#define IDI_PERMISSIONS 177
#define IDI_SECURE_DELETION 179
#define IDI_WIZARD 183
#define IDI_SETTINGS 184
#define IDI_HELP 186
#define IDI_UP 187
#define IDI_CUT 225
#define IDI_COPY 226
#define IDI_PASTE 227
#define IDI_DELETE 228
#define IDI_SHARES 257

// Icons: dialogs.
#define IDI_NOTICE 210

// Bitmaps.
#define IDB_WIZARD 215
#define IDB_BANNER 218
#define IDB_GO_NORMAL 249
#define IDB_GO_PRESSED 250
#define IDB_GO_DISABLED 251

// Strings besides the command prompts, which stand under their command's number ("status line\ntool tip").
#define IDS_ITEM_COUNT_PANE 123
#define IDS_PERMISSIONS_TAB 134
#define IDS_OWNER_TAB 143
#define IDS_EFFECTIVE_PERMISSIONS_TAB 145
#define IDS_CAPTION_ERROR 147
#define IDS_CAPTION_INFORMATION 149
#define IDS_IDLE_MESSAGE 57345

// Commands: location.
#define ID_GO_UP 133
#define ID_GO_BACK 150
#define ID_GO_FORWARD 151
#define ID_GO_TO_LOCATION 152
#define ID_GO_TO_ROOT 182
#define ID_REFRESH 180
#define ID_SHOW_SHARES 32804

// Commands: security.
#define ID_WIZARD 130
#define ID_PERMISSIONS 153
#define ID_SECURE_DELETION 154
#define ID_HISTORY 32810
#define ID_FIND 32811
#define ID_REPORT 32812
#define ID_RESTART_AS_ADMINISTRATOR 32813

// Commands: selection and files. Undo and the clipboard commands have the framework's standard numbers.
#define ID_SELECT_ALL 131
#define ID_INVERT_SELECTION 132
#define ID_DELETE 32788
#define ID_PROPERTIES 32795
#define ID_RENAME 32797
#define ID_ATTRIBUTES 32799
#define ID_NEW_FOLDER 32800
#define ID_EDIT_COPY 57634
#define ID_EDIT_CUT 57635
#define ID_EDIT_PASTE 57637
#define ID_EDIT_UNDO 57643
#define ID_COPY_HOST_PATH 32905

// Commands: windows of results.
#define ID_SAVE_RESULTS 32820
#define ID_CLOSE_RESULTS 32821
#define ID_STOP_RESULTS 32822
#define ID_COPY_PATHS 32824
#define ID_SHOW_IN_FOLDER 32825
// Those of the pages, which the window adds to its menu.
#define IDP_FIRST_RESULT_PAGE 32830
#define IDP_LAST_RESULT_PAGE 32837

// Commands: view. Toolbar and status bar have the framework's standard numbers.
#define ID_VIEW_ICONS 135
#define ID_VIEW_SMALL_ICONS 136
#define ID_VIEW_LIST 137
#define ID_VIEW_DETAILS 138
#define ID_VIEW_OWN_ICONS 168
#define IDP_FIRST_SECURITY_COLUMN 32900
#define ID_COLUMN_OWNER 32900
#define ID_COLUMN_INHERITS 32901
#define ID_COLUMN_OWN_ENTRIES 32902
#define ID_COLUMN_MODE 32903
#define IDP_LAST_SECURITY_COLUMN 32903
#define ID_VIEW_DOT_NAMES 32904
#define ID_VIEW_FOLDER_TREE 32906
#define ID_VIEW_TOOLBAR 59392
#define ID_VIEW_STATUS_BAR 59393

// Commands: program and help. About and Exit have the framework's standard numbers.
#define ID_HELP_CONTENTS 139
#define ID_SETTINGS 181
#define ID_TECHNICAL_SUPPORT 32773
#define ID_WEB_SITE 32774
#define ID_APP_ABOUT 57664
#define ID_APP_EXIT 57665

// Labels, frames and pictures that no code addresses.
#ifndef IDC_STATIC
#define IDC_STATIC (-1)
#endif

// About box.
#define IDD_ABOUT 100
#define IDC_ABOUT_VISIT 1133

// Address bar. Its go button has the number of its command, ID_GO_TO_LOCATION.
#define IDD_ADDRESS_BAR 120
#define IDC_LOCATION 1002

// The tree of folders at the side.
#define IDC_FOLDER_TREE 1330

// Permissions page of the security editor.
#define IDD_PERMISSIONS_PAGE 155
#define IDC_ACCESS_LIST 1010
#define IDC_ADD_ENTRY 1011
#define IDC_REMOVE_ENTRY 1012
#define IDC_EDIT_ENTRY 1013
#define IDC_INHERIT_FROM_PARENT 1020
#define IDC_REPLACE_CHILD_ENTRIES 1021
#define IDC_LIST_REMARK 1150
#define IDC_LIST_KEPT 1260
#define IDC_SHOW_SOURCES 1261

// Permissions page of the share security sheet, with the same controls.
#define IDD_SHARE_PERMISSIONS_PAGE 253

// Owner page.
#define IDD_OWNER_PAGE 157
#define IDC_OWNER_CANDIDATES 1042
#define IDC_OWNER_NAME 1090
#define IDC_REPLACE_CHILD_OWNERS 1092

// Effective permissions page.
#define IDD_EFFECTIVE_PERMISSIONS_PAGE 158
#define IDC_EFFECTIVE_RIGHTS 1041
#define IDC_CHANGE_EFFECTIVE_ACCOUNT 1088
#define IDC_EFFECTIVE_ACCOUNT 1089
#define IDC_EFFECTIVE_REMARK 1151
#define IDC_EXACT_GROUPS 1157

// Permission entry dialog.
#define IDD_PERMISSION_ENTRY 159
#define IDC_APPLY_ONTO 1022
#define IDC_CHANGE_ENTRY_ACCOUNT 1023
#define IDC_ENTRY_ACCOUNT 1024
#define IDC_ENTRY_CANCEL 1035
#define IDC_ENTRY_OK 1036
#define IDC_CLEAR_ALL 1038
#define IDC_CHILDREN_ONLY 1087

// Permission entry dialog: the two boxes of each right.
#define IDC_ALLOW_FULL_CONTROL 1050
#define IDC_DENY_FULL_CONTROL 1060
#define IDC_ALLOW_TRAVERSE 1062
#define IDC_DENY_TRAVERSE 1061
#define IDC_ALLOW_READ_DATA 1064
#define IDC_DENY_READ_DATA 1063
#define IDC_ALLOW_READ_ATTRIBUTES 1067
#define IDC_DENY_READ_ATTRIBUTES 1066
#define IDC_ALLOW_READ_EXTENDED 1065
#define IDC_DENY_READ_EXTENDED 1068
#define IDC_ALLOW_WRITE_DATA 1070
#define IDC_DENY_WRITE_DATA 1071
#define IDC_ALLOW_APPEND_DATA 1069
#define IDC_DENY_APPEND_DATA 1072
#define IDC_ALLOW_WRITE_ATTRIBUTES 1073
#define IDC_DENY_WRITE_ATTRIBUTES 1074
#define IDC_ALLOW_WRITE_EXTENDED 1075
#define IDC_DENY_WRITE_EXTENDED 1076
#define IDC_ALLOW_DELETE_CHILD 1078
#define IDC_DENY_DELETE_CHILD 1082
#define IDC_ALLOW_DELETE 1080
#define IDC_DENY_DELETE 1077
#define IDC_ALLOW_READ_PERMISSIONS 1079
#define IDC_DENY_READ_PERMISSIONS 1081
#define IDC_ALLOW_CHANGE_PERMISSIONS 1083
#define IDC_DENY_CHANGE_PERMISSIONS 1084
#define IDC_ALLOW_TAKE_OWNERSHIP 1086
#define IDC_DENY_TAKE_OWNERSHIP 1085

// Account picker.
#define IDD_ACCOUNT_PICKER 160
#define IDC_FOUND_ACCOUNTS 1030
#define IDC_FIND_ACCOUNTS 1031
#define IDC_PICKER_CANCEL 1032
#define IDC_PICKER_OK 1033
#define IDC_ACCOUNT_NAME 1034
#define IDC_SEARCH_STATE 1155
#define IDC_STOP_SEARCH 1156

// Progress of applying settings to a folder tree.
#define IDD_APPLY_TO_TREE 161
#define IDC_APPLY_PROGRESS 1091

// Secure deletion.
#define IDD_SECURE_DELETION 162
#define IDC_DELETION_PROGRESS 1093
#define IDC_STOP_DELETION 1094
#define IDC_DELETION_BAR 1331
#define IDC_DELETION_TIME_LEFT 1332

// Wizard: task page.
#define IDD_WIZARD_TASK_PAGE 164
#define IDC_TASK_DELETION 1095
#define IDC_TASK_PERMISSIONS 1096

// Wizard: deletion page.
#define IDD_WIZARD_DELETION_PAGE 165
#define IDC_DELETION_STATUS 1043

// Wizard: permissions page.
#define IDD_WIZARD_PERMISSIONS_PAGE 166
#define IDC_COMBINATIONS 1040
#define IDC_WIZARD_ACCOUNTS 1044
#define IDC_WIZARD_REMOVE_ACCOUNT 1100
#define IDC_WIZARD_ADD_ACCOUNT 1101
#define IDC_WIZARD_RIGHTS 1103

// Settings.
#define IDD_SETTINGS 188
#define IDC_SETTINGS_ICONS 1104
#define IDC_SETTINGS_SMALL_ICONS 1105
#define IDC_SETTINGS_LIST 1106
#define IDC_SETTINGS_DETAILS 1107
#define IDC_SETTINGS_OWN_ICONS 1108
#define IDC_SETTINGS_ASK_BEFORE_DELETION 1109
#define IDC_SETTINGS_INTERMEDIATE_INFO 1111
#define IDC_SETTINGS_EXPLORER_MENU 1112
#define IDC_SETTINGS_TOOL_TIPS 1113

// Multi-selection notice.
#define IDD_SELECTION_NOTICE 209
#define IDC_DO_NOT_SHOW_AGAIN 1114
#define IDC_NOTICE_TEXT 1115

// Rename.
#define IDD_RENAME 241
#define IDC_NEW_NAME 1134

// New folder.
#define IDD_NEW_FOLDER 243
#define IDC_FOLDER_NAME 1001

// New share.
#define IDD_NEW_SHARE 270
#define IDC_SHARE_FOLDER 1180
#define IDC_CHOOSE_SHARE_FOLDER 1181
#define IDC_SHARE_NAME 1182
#define IDC_SHARE_COMMENT 1183
#define IDC_SHARE_ALL_USERS 1184
#define IDC_SHARE_SOME_USERS 1185
#define IDC_SHARE_USER_LIMIT 1186

// Properties: one dialog for each kind of object, with the same fields under the same numbers.
#define IDD_FILE_PROPERTIES 280
#define IDD_FOLDER_PROPERTIES 281
#define IDD_LINK_PROPERTIES 282
#define IDD_DRIVE_PROPERTIES 283
#define IDC_PROPERTY_NAME 1200
#define IDC_PROPERTY_KIND 1201
#define IDC_PROPERTY_LOCATION 1202
#define IDC_PROPERTY_HOST_PATH 1300
#define IDC_PROPERTY_TARGET 1203
#define IDC_PROPERTY_SIZE 1204
#define IDC_PROPERTY_SIZE_ON_DISK 1205
#define IDC_PROPERTY_CONTENTS 1206
#define IDC_PROPERTY_CREATED 1207
#define IDC_PROPERTY_MODIFIED 1208
#define IDC_PROPERTY_ACCESSED 1209
#define IDC_PROPERTY_ATTRIBUTES 1210
#define IDC_PROPERTY_OWNER 1211
#define IDC_PROPERTY_PERMISSIONS 1212
#define IDC_PROPERTY_FILE_SYSTEM 1213
#define IDC_PROPERTY_CAPACITY 1214
#define IDC_PROPERTY_USED 1215
#define IDC_PROPERTY_FREE 1216
#define IDC_PROPERTY_USED_BAR 1217

// History of changes.
#define IDD_HISTORY 290
#define IDC_CHANGES 1230
#define IDC_OBJECTS_TITLE 1231
#define IDC_CHANGED_OBJECTS 1232
#define IDC_BEFORE_AND_AFTER 1233
#define IDC_HISTORY_REMARK 1234
#define IDC_UNDO_CHANGE 1235
#define IDC_OBJECTS_BEFORE 1238
#define IDC_OBJECTS_AFTER 1239

// Progress of an undo.
#define IDD_UNDO 291
#define IDC_UNDO_PROGRESS 1236
#define IDC_STOP_UNDO 1237

// What a search is to look for, and the bar of a window of results.
#define IDD_FIND 292
#define IDC_FIND_IN_SELECTION 1240
#define IDC_FIND_IN_FOLDER 1241
#define IDC_FIND_ONE_ACCOUNT 1242
#define IDC_FIND_ACCOUNT 1243
#define IDC_FIND_BROWSE_ACCOUNT 1244
#define IDC_FIND_GONE_ACCOUNTS 1245
#define IDC_FIND_ENTRIES 1246
#define IDC_FIND_RIGHTS 1247
#define IDC_FIND_EFFECT 1248
#define IDC_FIND_ORIGIN 1249
#define IDC_FIND_OWNERS 1250
#define IDD_RESULTS_BAR 293
#define IDC_RESULTS_PAGE 1251

// What a report is made of, and what it lists.
#define IDD_REPORT 700
#define IDC_REPORT_ON_SELECTION 701
#define IDC_REPORT_ON_FOLDER 702
#define IDC_REPORT_LEVELS 703
#define IDC_REPORT_ACCOUNT 704
#define IDC_REPORT_BROWSE_ACCOUNT 705
#define IDC_REPORT_REMARKS 706
#define IDC_REPORT_MEMBERS 707

// File attributes.
#define IDD_ATTRIBUTES 242
#define IDC_ARCHIVE 1135
#define IDC_HIDDEN 1136
#define IDC_ALLOW_INDEXING 1137
#define IDC_OFFLINE 1138
#define IDC_READONLY 1139
#define IDC_SYSTEM 1140
#define IDC_TEMPORARY 1141
#define IDC_ENCRYPTED 1148
#define IDC_COMPRESSED 1149

// Ready-made rights in the permission entry dialog.
#define IDC_ALLOW_READ 1290
#define IDC_ALLOW_MODIFY 1291
#define IDC_ALLOW_ALL 1292
#define IDC_DENY_READ 1293
#define IDC_DENY_MODIFY 1294
#define IDC_DENY_ALL 1295

// Owners that are not in the list of the owner page.
#define IDC_OTHER_OWNER 1296
#define IDC_OWNER_REMARK 1297

// What became of the objects of a change.
#define IDD_CHANGE_RESULTS 775
#define IDR_CHANGE_RESULTS 776
#define IDC_RESULTS_SUMMARY 1280
#define IDC_RESULTS 1281
#define IDC_TRY_AGAIN 1282
#define IDC_COPY_ALL_RESULTS 1283
#define IDC_SHOW_LEFT_OVER 1284

// What a change would do, shown or asked about.
#define IDD_PREVIEW 772
#define IDD_PREVIEW_QUESTION 773
#define IDC_PREVIEW 1270
#define IDC_PREVIEW_LINES 1271
#define IDC_PREVIEW_PROGRESS 1272
#define IDC_PREVIEW_STOP 1273
#define IDC_PREVIEW_COPY 1274
#define IDC_PREVIEW_DO_NOT_ASK 1275
#define IDC_SETTINGS_ASK_BEFORE_LOSSES 1276

// Why an account has the rights that the page of effective permissions shows.
#define IDD_RIGHTS_EXPLANATION 760
#define IDC_EXPLAIN_RIGHTS 761
#define IDC_EXPLAINED_ACCOUNT 762
#define IDC_EXPLAINED_RIGHTS 763
#define IDC_EXPLANATION_REMARKS 764

// Several accounts and objects at once.
#define IDD_COMPARE_ACCOUNTS 790
#define IDC_COMPARE_ACCOUNTS 1320
#define IDC_NETWORK_RIGHTS 1321
#define IDC_COMPARED_OBJECTS 1322
#define IDC_COMPARED_RIGHTS 1323
#define IDC_ADD_COMPARED 1324
#define IDC_REMOVE_COMPARED 1325
#define IDC_COPY_COMPARED 1326
#define IDC_COMPARISON_REMARKS 1327

// The program's own window of help pages.
#define IDD_HELP 800
#define IDC_HELP_PAGE 1340
#define IDC_HELP_BACK 1341
#define IDC_HELP_FORWARD 1342
#define IDC_HELP_CONTENTS 1343
