// SPDX-License-Identifier: MIT
//
// Puts stb's code to write or read images into a source file, without the warnings that it causes.
// Define STB_IMAGE_WRITE_IMPLEMENTATION or STB_IMAGE_IMPLEMENTATION, and the macros that configure
// them, before the include.
#pragma once

#if defined(__GNUC__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wpragmas"
#pragma GCC diagnostic ignored "-Wunknown-warning-option"
#pragma GCC diagnostic ignored "-Wcast-qual"
#pragma GCC diagnostic ignored "-Wconversion"
#pragma GCC diagnostic ignored "-Wdouble-promotion"
#pragma GCC diagnostic ignored "-Wduplicated-branches"
#pragma GCC diagnostic ignored "-Wmissing-field-initializers"
#pragma GCC diagnostic ignored "-Wold-style-cast"
#pragma GCC diagnostic ignored "-Wshadow"
#pragma GCC diagnostic ignored "-Wsign-compare"
#pragma GCC diagnostic ignored "-Wsign-conversion"
#pragma GCC diagnostic ignored "-Wunused-function"
#pragma GCC diagnostic ignored "-Wuseless-cast"
#endif
#ifdef STB_IMAGE_WRITE_IMPLEMENTATION
#include <stb/stb_image_write.h>
#endif
#ifdef STB_IMAGE_IMPLEMENTATION
#include <stb/stb_image.h>
#endif
#if defined(__GNUC__)
#pragma GCC diagnostic pop
#endif
