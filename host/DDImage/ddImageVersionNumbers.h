// Which version of the host's interface these headers stand in for.
#pragma once

#define kDDImageVersionMajorNum 7
#define kDDImageVersionMinorNum 0
#define kDDImageVersionReleaseNum 6
#define kDDImageVersion "7.0v6"
#define kDDImageVersionInteger 70600

// What a plug-in records about its build. The date is the interface's own and not the day of the
// compilation, so that the same source gives the same binary.
#define kDDImageCompiled "Jun 10 2013 for " kDDImageVersion
