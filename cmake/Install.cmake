# `cmake --install`: vesk and vesk_import, the static libraries with their headers, the man pages and
# a CMake package: find_package(vesk) gives vesk::base, vesk::stdalg_ds, vesk::stdalg_alg (and
# vesk::stdalg for both), vesk::model, vesk::vesk_core, vesk::seqpack, vesk::bic,
# vesk::seqpack_bicsearch, vesk::hmm and vesk::ebn, linked as in the tree.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(VESK_INSTALL_LIBS base stdalg_ds stdalg_alg model vesk_core seqpack bic seqpack_bicsearch hmm ebn)
set(VESK_INSTALL_INCLUDE "${CMAKE_INSTALL_INCLUDEDIR}/vesk")

set(_vesk_header_dirs)
foreach(lib IN LISTS VESK_INSTALL_LIBS)
  # Each library's include root (its folder, or stdalg/) stays as it is in the tree and becomes
  # include/vesk/<folder> once installed.
  get_target_property(dirs ${lib} INTERFACE_INCLUDE_DIRECTORIES)
  set(wrapped)
  foreach(d IN LISTS dirs)
    file(RELATIVE_PATH rel "${PROJECT_SOURCE_DIR}" "${d}")
    list(APPEND wrapped "$<BUILD_INTERFACE:${d}>" "$<INSTALL_INTERFACE:${VESK_INSTALL_INCLUDE}/${rel}>")
    list(APPEND _vesk_header_dirs "${rel}")
  endforeach()
  set_target_properties(${lib} PROPERTIES INTERFACE_INCLUDE_DIRECTORIES "${wrapped}")
endforeach()
list(REMOVE_DUPLICATES _vesk_header_dirs)
foreach(rel IN LISTS _vesk_header_dirs)
  install(DIRECTORY "${PROJECT_SOURCE_DIR}/${rel}/" DESTINATION "${VESK_INSTALL_INCLUDE}/${rel}"
          FILES_MATCHING PATTERN "*.h" PATTERN "*.tcc")
endforeach()

install(TARGETS ${VESK_INSTALL_LIBS} vesk vesk_import EXPORT veskTargets
        ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}"
        RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}")
install(EXPORT veskTargets NAMESPACE vesk:: DESTINATION "${CMAKE_INSTALL_LIBDIR}/cmake/vesk")
configure_package_config_file("${PROJECT_SOURCE_DIR}/cmake/veskConfig.cmake.in"
                              "${PROJECT_BINARY_DIR}/veskConfig.cmake"
                              INSTALL_DESTINATION "${CMAKE_INSTALL_LIBDIR}/cmake/vesk")
write_basic_package_version_file("${PROJECT_BINARY_DIR}/veskConfigVersion.cmake"
                                 VERSION ${PROJECT_VERSION} COMPATIBILITY SameMajorVersion)
install(FILES "${PROJECT_BINARY_DIR}/veskConfig.cmake" "${PROJECT_BINARY_DIR}/veskConfigVersion.cmake"
        DESTINATION "${CMAKE_INSTALL_LIBDIR}/cmake/vesk")
install(FILES "${PROJECT_SOURCE_DIR}/docs/man/vesk.1" "${PROJECT_SOURCE_DIR}/docs/man/vesk_import.1"
        DESTINATION "${CMAKE_INSTALL_MANDIR}/man1")
