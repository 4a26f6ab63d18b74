#pragma once

// Resources of the tests of CBasePropertyPage.
#define IDD_PLAIN_PAGE 201
#define IDD_PAGE_WITH_CAPTION 202
#define IDD_MISSING_PAGE 299
#define IDC_NAME 1001
#define IDS_TITLE 301
#define IDS_MISSING 399
