# SPDX-License-Identifier: BSD-3-Clause

# What `cmake --install` makes: a self-contained folder that may be moved anywhere, and that users of
# Nuke add to NUKE_PATH.
#
#     bin/velmora   lib/libDDImage.so   plugin/VelmoraNK.so    the command line and its stand-in
#     share/velmora/                                           the star database
#     init.py   menu.py   icons/   plugin/nuke<version>/       what Nuke runs, shows and loads
#     examples/   docs/
#
# A build for a real Nuke adds its plug-in to the same folder, or makes one without the command line.

# Start-up scripts of a host do not belong in /usr/local.
if(CMAKE_INSTALL_PREFIX_INITIALIZED_TO_DEFAULT)
    set(CMAKE_INSTALL_PREFIX ${PROJECT_BINARY_DIR}/installed
        CACHE PATH "The folder that cmake --install makes" FORCE)
endif()

install(FILES packaging/init.py packaging/menu.py DESTINATION .)
install(DIRECTORY packaging/icons DESTINATION . FILES_MATCHING PATTERN "*.png" PATTERN "*.svg")
if(NUKE_ROOT)
    install(TARGETS VelmoraNK LIBRARY DESTINATION plugin/nuke${NUKE_VERSION})
    return()
endif()

install(TARGETS velmora_cli RUNTIME DESTINATION bin)
install(TARGETS DDImage LIBRARY DESTINATION lib)
install(TARGETS VelmoraNK LIBRARY DESTINATION plugin)
install(FILES ${PROJECT_BINARY_DIR}/share/velmora/stars.velmora data/LICENSE.d3-celestial
    DESTINATION share/velmora)
install(DIRECTORY packaging/examples docs DESTINATION .)
