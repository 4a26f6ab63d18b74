#pragma once

#define IDD_TOY_PAGE 101
#define IDS_TOY_PAGE 102
