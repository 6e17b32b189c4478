// SPDX-License-Identifier: MIT
//
// Gives float_check.h a file of its own in the library, so that every build compiles the checks.
#include "platform/float_check.h"
