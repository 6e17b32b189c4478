// SPDX-License-Identifier: MIT
//
// Compiles the checks of float_check.h in every build.
#include "platform/float_check.h"
