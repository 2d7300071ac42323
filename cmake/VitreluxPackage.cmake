# What `cmake --install` and `cpack` put where: the program and the plug-in for users; headers, kernels and a CMake
# package for makers of hosts.
include(CMakePackageConfigHelpers)

set(sdk_dir "lib/cmake/Vitrelux")
install(TARGETS tools primitives circlefit interfaces image EXPORT VitreluxTargets ARCHIVE DESTINATION ${VITRELUX_PLUGIN_DIR})
install(TARGETS imagefile EXPORT VitreluxTargets LIBRARY DESTINATION ${VITRELUX_PLUGIN_DIR})
install(EXPORT VitreluxTargets NAMESPACE Vitrelux:: DESTINATION ${sdk_dir})
foreach(folder tools image interfaces)
    install(DIRECTORY ${folder}/ DESTINATION include/vitrelux FILES_MATCHING
            PATTERN "*.h" PATTERN "*_p.h" EXCLUDE PATTERN "primitives" EXCLUDE PATTERN "circlefit" EXCLUDE)
endforeach()
install(FILES imagefile/gfl.h imagefile/gfl_records.h DESTINATION include/vitrelux)

file(WRITE "${CMAKE_BINARY_DIR}/VitreluxConfig.cmake" [[
include(CMakeFindDependencyMacro)
find_dependency(Qt5 COMPONENTS Core Gui Sql Widgets Xml)
find_dependency(OpenMP COMPONENTS CXX)
find_dependency(TBB)
include("${CMAKE_CURRENT_LIST_DIR}/VitreluxTargets.cmake")
target_compile_features(Vitrelux::interfaces INTERFACE cxx_std_17)
get_filename_component(VITRELUX_PLUGIN "${CMAKE_CURRENT_LIST_DIR}/../../vitrelux/libKVitrelux.so" ABSOLUTE)
]])
write_basic_package_version_file("${CMAKE_BINARY_DIR}/VitreluxConfigVersion.cmake" COMPATIBILITY SameMajorVersion)
install(FILES "${CMAKE_BINARY_DIR}/VitreluxConfig.cmake" "${CMAKE_BINARY_DIR}/VitreluxConfigVersion.cmake"
        DESTINATION ${sdk_dir})
install(FILES README.md LICENSE CHANGELOG.md DESTINATION share/doc/vitrelux)
install(FILES docs/host-guide.md DESTINATION share/doc/vitrelux)
install(FILES resources/desktop/vitrelux.desktop DESTINATION share/applications)
install(FILES resources/icons/KVitrelux.png DESTINATION share/icons/hicolor/256x256/apps RENAME vitrelux.png)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME vitrelux)
set(CPACK_PACKAGE_CONTACT "The Vitrelux authors <authors@vitrelux.example>")
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION graphics)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${CMAKE_LIBRARY_OUTPUT_DIRECTORY}")
set(CPACK_DEBIAN_PACKAGE_DEPENDS "libqt5sql5-sqlite, liblensfun-data-v1") # read at run time: not among the linked ones
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS qttranslations5-l10n) # the file dialog in the user's language
set(CPACK_STRIP_FILES ON)
include(CPack)
