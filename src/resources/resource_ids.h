#pragma once

/// The numbers of the module's dialogs, pictures and controls, for C++ and the resource compiler.

#define IDD_PANEL 101
#define IDD_MANUAL_HOMING 103
#define IDD_AUTO_HOMING 104

#define IDB_TABLE_LEFT 118
#define IDB_TABLE_RIGHT 119
#define IDB_TABLE_FRONT 120
#define IDB_TABLE_BACK 121
#define IDB_COLUMN_UP 122

// Both homing dialogs; their buttons are IDOK and IDCANCEL.
#define IDC_HOMING_PICTURE 1020
#define IDC_HOMING_TEXT 1021

// The panel.
#define IDC_CLOSE 1001
#define IDC_BAUD_RATE 1002
#define IDC_PORT 1003
#define IDC_PARITY 1004
#define IDC_STOP_BITS 1005
#define IDC_BYTE_SIZE 1006
#define IDC_OPEN_COMM 1007
#define IDC_CLOSE_COMM 1008
#define IDC_HOME 1009
#define IDC_HOME_CNC 1010
#define IDC_REMOTE_ENABLE 1011
#define IDC_SEND_TEXT 1012
#define IDC_RECEIVED 1013
#define IDC_SEND 1014
#define IDC_SENT 1015
#define IDC_GET_POSITION 1016
#define IDC_POSITION 1017
#define IDC_SET_LIGHT_1 1018
#define IDC_LIGHT_1_PERCENT 1019
#define IDC_STREAM_POSITION 1020
#define IDC_LIGHT_1_REPLY 1021
#define IDC_SET_LIGHT_2 1022
#define IDC_LIGHT_2_PERCENT 1023
#define IDC_LIGHT_2_REPLY 1024
#define IDC_GET_STATUS 1025
#define IDC_STATUS 1026
#define IDC_SET_POSITION 1027
#define IDC_TARGET 1028
#define IDC_RECOVERY 1029
