# What `cmake --install` lays down: the libraries, their headers, the workbench, and the files by which CMake and
# pkg-config find them. The tree may be moved as a whole: nothing in it names the prefix.

include(CMakePackageConfigHelpers)

set(libraries KestrunePlatform Kestrune)
set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/Kestrune)

set_target_properties(${libraries} PROPERTIES INSTALL_RPATH $ORIGIN)
install(TARGETS ${libraries} EXPORT KestruneTargets)

# The folders are installed for the sake of their headers only. They stay out of the export: users see two targets,
# and names like helper.h stay behind the directory Kestrune/.
foreach(library IN LISTS libraries)
    get_target_property(folders ${library} KESTRUNE_INSTALLED_FOLDERS)
    install(TARGETS ${folders} FILE_SET HEADERS DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/Kestrune)
endforeach()

install(EXPORT KestruneTargets NAMESPACE Kestrune:: DESTINATION ${package_dir})
configure_package_config_file(cmake/KestruneConfig.cmake.in ${CMAKE_CURRENT_BINARY_DIR}/KestruneConfig.cmake
    INSTALL_DESTINATION ${package_dir}
    NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/KestruneConfigVersion.cmake
    COMPATIBILITY SameMajorVersion)
install(FILES
    ${CMAKE_CURRENT_BINARY_DIR}/KestruneConfig.cmake
    ${CMAKE_CURRENT_BINARY_DIR}/KestruneConfigVersion.cmake
    DESTINATION ${package_dir})

set(pkgconfig_dir ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
file(RELATIVE_PATH prefix_from_pkgconfig /${pkgconfig_dir} /)
string(REGEX REPLACE "/$" "" prefix_from_pkgconfig ${prefix_from_pkgconfig})
foreach(name IN ITEMS kestrune kestrune-platform)
    configure_file(cmake/${name}.pc.in ${CMAKE_CURRENT_BINARY_DIR}/${name}.pc @ONLY)
    install(FILES ${CMAKE_CURRENT_BINARY_DIR}/${name}.pc DESTINATION ${pkgconfig_dir})
endforeach()

file(RELATIVE_PATH libraries_from_programs /${CMAKE_INSTALL_BINDIR} /${CMAKE_INSTALL_LIBDIR})
set_target_properties(kestrune-workbench PROPERTIES INSTALL_RPATH $ORIGIN/${libraries_from_programs})
install(TARGETS kestrune-workbench)
install(FILES cmake/kestrune-workbench.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
