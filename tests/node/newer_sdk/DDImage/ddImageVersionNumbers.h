// SPDX-License-Identifier: BSD-3-Clause

// A version of the host's interface that the test picks.
#pragma once

#define kDDImageVersionMajorNum TEST_HOST_MAJOR
#define kDDImageVersionMinorNum TEST_HOST_MINOR
