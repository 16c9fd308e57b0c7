# SPDX-License-Identifier: BSD-3-Clause

# The host's interface from the installation in NUKE_ROOT, as the target DDImage.
#
# The plug-in, and the library in it, are compiled with the layout of std::string that the host was
# compiled with: the old one up to version 14, the new one from 15 on. Sets NUKE_VERSION
# (<major>.<minor>) for the including folder and the one above.

function(nuke_root_error why)
    message(FATAL_ERROR "NUKE_ROOT=${NUKE_ROOT}: ${why}")
endfunction()

# The tools and what goes with them run on the stand-in host, which such a build does not have.
if(VELMORA_TOOLS OR VELMORA_TESTS OR VELMORA_BENCH)
    nuke_root_error("a build for Nuke makes the plug-in alone: add -DVELMORA_TOOLS=OFF \
-DVELMORA_TESTS=OFF -DVELMORA_BENCH=OFF")
endif()

set(nuke_headers ${NUKE_ROOT}/include)
set(nuke_version_header ${nuke_headers}/DDImage/ddImageVersionNumbers.h)
set(nuke_library ${NUKE_ROOT}/libDDImage.so)
if(NOT IS_DIRECTORY "${NUKE_ROOT}")
    nuke_root_error("there is no such folder")
endif()
if(NOT EXISTS "${nuke_version_header}")
    nuke_root_error("there is no include/DDImage/ddImageVersionNumbers.h in it")
endif()
if(NOT EXISTS "${nuke_library}")
    nuke_root_error("there is no libDDImage.so in it")
endif()

function(nuke_version_number part result)
    file(STRINGS "${nuke_version_header}" line REGEX "^#define +kDDImageVersion${part}Num +[0-9]+")
    if(NOT line)
        nuke_root_error("include/DDImage/ddImageVersionNumbers.h has no kDDImageVersion${part}Num")
    endif()
    string(REGEX REPLACE "^.*Num +([0-9]+).*$" "\\1" number "${line}")
    set(${result} ${number} PARENT_SCOPE)
endfunction()
nuke_version_number(Major nuke_major)
nuke_version_number(Minor nuke_minor)
set(NUKE_VERSION ${nuke_major}.${nuke_minor})
set(NUKE_VERSION ${NUKE_VERSION} PARENT_SCOPE)

# Up to 10 the interface is C++98; from 11 on it is at least C++11, most of which is C++17 too.
if(nuke_major LESS 11)
    nuke_root_error("the interface of Nuke ${NUKE_VERSION} is C++98, and the node is C++17: \
11.0 is the oldest that can be built for")
endif()

add_library(DDImage SHARED IMPORTED)
set_target_properties(DDImage PROPERTIES
    IMPORTED_LOCATION "${nuke_library}"
    IMPORTED_NO_SONAME ON # needed by name and never by path, whatever the library says of itself
    INTERFACE_INCLUDE_DIRECTORIES "${nuke_headers}")

if(nuke_major LESS 15)
    target_compile_definitions(velmora PUBLIC _GLIBCXX_USE_CXX11_ABI=0)
else()
    target_compile_definitions(velmora PUBLIC _GLIBCXX_USE_CXX11_ABI=1)
endif()
message(STATUS "Building the plug-in for Nuke ${NUKE_VERSION}")
