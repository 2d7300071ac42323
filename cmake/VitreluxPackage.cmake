# Install rules for `cmake --install` and `cpack`: the program and the plug-in for users; headers, kernels and a CMake
# package for developers of hosts.
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
install(FILES README.md DESTINATION share/doc/vitrelux)
install(FILES docs/host-guide.md docs/large-jobs.md docs/correct.schema.json DESTINATION share/doc/vitrelux)
install(FILES resources/desktop/vitrelux.desktop DESTINATION share/applications)
install(FILES resources/icons/KVitrelux.png DESTINATION share/icons/hicolor/256x256/apps RENAME vitrelux.png)

# Man pages and completion scripts, written by the program itself.
set(share_dir "${CMAKE_BINARY_DIR}/share")
add_custom_command(OUTPUT "${share_dir}/man/man1/vitrelux.1.gz"
    COMMAND packaging/write-share "${share_dir}" ${CMAKE_CROSSCOMPILING_EMULATOR} "$<TARGET_FILE:vitrelux>"
    DEPENDS vitrelux packaging/write-share
    WORKING_DIRECTORY "${CMAKE_SOURCE_DIR}"
    VERBATIM)
add_custom_target(share ALL DEPENDS "${share_dir}/man/man1/vitrelux.1.gz")
install(DIRECTORY "${share_dir}/man" "${share_dir}/bash-completion" "${share_dir}/fish" DESTINATION share)
# Debian's zsh reads vendor-completions below /usr and site-functions below /usr/local.
install(CODE "set(overrides \"${CMAKE_CURRENT_SOURCE_DIR}/packaging/lintian-overrides\")")
install(CODE "set(zsh_file \"${share_dir}/zsh/vendor-completions/_vitrelux\")")
install(CODE [[
if(CMAKE_INSTALL_PREFIX MATCHES "/usr$")
    set(zsh_dir vendor-completions)
    file(INSTALL "${overrides}" DESTINATION "${CMAKE_INSTALL_PREFIX}/share/lintian/overrides" RENAME vitrelux)
else()
    set(zsh_dir site-functions)
endif()
file(INSTALL "${zsh_file}" DESTINATION "${CMAKE_INSTALL_PREFIX}/share/zsh/${zsh_dir}")
]])

# File manager entries. All use the MIME types and names of the desktop entries. The name vitrelux_correct sorts after
# vitrelux.desktop: without a default application, a double-click starts the first entry, the wizard.
file(STRINGS resources/desktop/vitrelux.desktop mime_types REGEX "^MimeType=" ENCODING UTF-8)
file(STRINGS packaging/file-managers/vitrelux_correct.desktop.in names REGEX "^Name" ENCODING UTF-8)
string(REPLACE "\\;" ";" mime_types "${mime_types}")
list(JOIN names "\n" names)
foreach(entry vitrelux_correct vitrelux-servicemenu)
    configure_file(packaging/file-managers/${entry}.desktop.in "${CMAKE_BINARY_DIR}/desktop/${entry}.desktop" @ONLY)
endforeach()
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS resources/desktop/vitrelux.desktop)
install(FILES "${CMAKE_BINARY_DIR}/desktop/vitrelux_correct.desktop" DESTINATION share/applications)
install(FILES "${CMAKE_BINARY_DIR}/desktop/vitrelux-servicemenu.desktop" DESTINATION share/kio/servicemenus)
install(PROGRAMS packaging/large-jobs/slurm-array DESTINATION share/doc/vitrelux/examples)
install(FILES packaging/large-jobs/kubernetes-job.yaml packaging/large-jobs/vitrelux-watch.path
              packaging/large-jobs/vitrelux-watch.service packaging/large-jobs/vitrelux-watch.timer
              packaging/file-managers/thunar-uca.xml DESTINATION share/doc/vitrelux/examples)
install(PROGRAMS packaging/file-managers/nautilus-script DESTINATION share/doc/vitrelux/examples)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME vitrelux)
set(CPACK_PACKAGE_CONTACT "The Vitrelux authors <authors@vitrelux.example>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "profile-based lens correction, as a program and a Qt plug-in")
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
"Vitrelux removes distortion, color fringes and dark corners from photographs.
It uses lens correction profiles (.lcp) or lensfun's database, from the command
line, in a window with a preview, or as a plug-in for photo applications.")
set(CPACK_DEBIAN_PACKAGE_VERSION "${PROJECT_VERSION}")
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION graphics)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${CMAKE_LIBRARY_OUTPUT_DIRECTORY}")
set(CPACK_DEBIAN_PACKAGE_DEPENDS "libqt5sql5-sqlite, liblensfun-data-v1") # used at run time, not linked
# For a translated file dialog and for notifications.
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "qttranslations5-l10n, libnotify-bin")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_STRIP_FILES ON)

# Files that Debian requires in the documentation folder: license, and compressed change logs of program and package.
file(READ LICENSE license)
file(READ packaging/copyright-notes license_notes)
file(CONFIGURE OUTPUT "${CMAKE_BINARY_DIR}/doc/copyright" CONTENT "${license}${license_notes}" @ONLY)
execute_process(COMMAND date --utc --rfc-email --date=${VITRELUX_DATE} # in English; CMake's own dates follow the locale
    COMMAND tr -d "\n" OUTPUT_VARIABLE changelog_date)
configure_file(packaging/changelog.Debian.in "${CMAKE_BINARY_DIR}/doc/changelog.Debian" @ONLY)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS LICENSE packaging/copyright-notes)
set(changes "${CMAKE_BINARY_DIR}/doc/changelog.gz" "${CMAKE_BINARY_DIR}/doc/changelog.Debian.gz")
add_custom_command(OUTPUT ${changes}
    COMMAND gzip -9n < "${CMAKE_SOURCE_DIR}/CHANGELOG.md" > "${CMAKE_BINARY_DIR}/doc/changelog.gz"
    COMMAND gzip -9n < "${CMAKE_BINARY_DIR}/doc/changelog.Debian" > "${CMAKE_BINARY_DIR}/doc/changelog.Debian.gz"
    DEPENDS CHANGELOG.md "${CMAKE_BINARY_DIR}/doc/changelog.Debian")
add_custom_target(changes ALL DEPENDS ${changes})
install(FILES "${CMAKE_BINARY_DIR}/doc/copyright" ${changes} DESTINATION share/doc/vitrelux)
include(CPack)
