#pragma once

// Identifiers of the pages' resources: of the resource script and of the pages' code. All fixed, by the
// interface that users and other programs know.

#define IDD_PARAMETERS_PAGE 101
#define IDD_BROWSER_PAGE 102
#define IDD_ABOUT_PAGE 103

#define IDB_LOGO 102

#define IDS_PARAMETERS_TITLE 1015
#define IDS_BROWSER_TITLE 1016
#define IDS_ABOUT_TITLE 1017

// Source settings page.
#define IDC_UNICAST_PORT 1017
#define IDC_MULTICAST_ADDRESS 1018
#define IDC_MULTICAST_PORT 1019
#define IDC_STREAM_CHANNEL 1020
#define IDC_BUFFER_COUNT 1021
#define IDC_DEFAULT_BUFFER_SIZE 1022
#define IDC_DROP_THRESHOLD 1023
#define IDC_USE_CURRENT 1025
#define IDC_DIAGNOSTICS 1026
#define IDC_DEVICE_WIDTH 1027
#define IDC_DEVICE_HEIGHT 1028
#define IDC_ROLE_CONTROLLER 1029
#define IDC_ROLE_UNICAST 1030
#define IDC_ROLE_MULTICAST 1031
#define IDC_SOURCE 1032
#define IDC_DEVICE 1033
#define IDC_CLEAR 1035
#define IDC_DEFAULT_SUMMARY 1036
#define IDC_RESTART_HINT 1037
#define IDC_OUTPUT_WIDTH 1038
#define IDC_OUTPUT_TYPE 1039
#define IDC_KERNEL_SIZE 1040
#define IDC_ZOOM 1041
#define IDC_OUTPUT_HEIGHT 1042

// Parameter browser page; identifiers count within one page.
#define IDC_FEATURE_SET 1013
#define IDC_VALUE 1014
#define IDC_FEATURES 1024
#define IDC_SET 1026
#define IDC_EXECUTE 1027

// About page.
#define IDC_LEGAL_NOTICE 1034
#define IDC_VERSION 1035
