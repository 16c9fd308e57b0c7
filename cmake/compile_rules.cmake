# SPDX-License-Identifier: BSD-3-Clause

# How all our sources are compiled: with warnings, and with floating point exactly as written.

add_library(velmora_rules INTERFACE)

# A pixel must not depend on the machine that made it: no fused multiply-add, no reassociation.
target_compile_options(velmora_rules INTERFACE -ffp-contract=off)

target_compile_options(velmora_rules INTERFACE
    -Wall -Wextra -Wnon-virtual-dtor -Wold-style-cast -Wcast-qual -Wformat=2
    $<$<CXX_COMPILER_ID:GNU>:-Wshadow=local>)

if(VELMORA_SANITIZE)
    add_compile_options(-fsanitize=${VELMORA_SANITIZE} -fno-sanitize-recover=all
                        -fno-omit-frame-pointer)
    add_link_options(-fsanitize=${VELMORA_SANITIZE})
endif()
