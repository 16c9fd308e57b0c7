// SPDX-License-Identifier: BSD-3-Clause

// The version of the host's interface that these headers follow.
#pragma once

#define kDDImageVersionMajorNum 7
#define kDDImageVersionMinorNum 0
#define kDDImageVersionReleaseNum 6
#define kDDImageVersion "7.0v6"
#define kDDImageVersionInteger 70600

// What a plug-in records about its build. The date is the interface's, not that of the compilation,
// so that builds are reproducible.
#define kDDImageCompiled "Jun 10 2013 for " kDDImageVersion
