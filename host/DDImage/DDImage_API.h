// SPDX-License-Identifier: BSD-3-Clause

// Marks what libDDImage.so gives to plug-ins, which are often compiled with hidden visibility.
#pragma once

#define DDImage_API __attribute__((visibility("default")))
