# SPDX-License-Identifier: BSD-3-Clause

# Release builds are hardened as Debian hardens its own programs: stack overflows are detected, the
# tables of addresses are read-only once the program has started, and programs load at a random
# address (PIE). Checks by the processor (-fcf-protection) are left out: Debian 12's start-up
# files switch them off for the whole program.
#
# _FORTIFY_SOURCE is for targets that link velmora_fortified, not for the library: it would call open,
# read and vsnprintf by other names, but tests of the library replace them by their plain names.

include(CheckPIESupported)
check_pie_supported(LANGUAGES CXX)

add_library(velmora_fortified INTERFACE)
if(VELMORA_SANITIZE OR NOT CMAKE_BUILD_TYPE STREQUAL "Release")
    return()
endif()

target_compile_options(velmora_rules INTERFACE -fstack-protector-strong -fstack-clash-protection)
target_compile_options(velmora_fortified INTERFACE -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2)
target_link_options(velmora_rules INTERFACE -Wl,-z,relro,-z,now,-z,noexecstack)
