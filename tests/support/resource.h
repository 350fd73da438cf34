#pragma once

#define IDD_EMPTY 110
