# What `cmake --install` puts where: the library with its public headers and the files by which other builds find
# it, and the host's bundle. The components are those of the packages.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(krutein_include_dir "${CMAKE_INSTALL_INCLUDEDIR}/krutein")
set(krutein_cmake_dir "${CMAKE_INSTALL_LIBDIR}/cmake/krutein")
set(krutein_pkgconfig_dir "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
set(krutein_private_dir "${CMAKE_INSTALL_LIBDIR}/krutein")

# The headers that a host may include, and no other: what they declare stays compatible within a major version.
set(krutein_public_headers
  Common/Export.h
  Common/Version.h
  Common/ini/IniObj.h
  Common/ini/dictionary.h
  Common/ini/iniparser.h
  Common/log/LogHandler.h
  Common/std/std_file.h
  Common/std/std_objc.h
  Common/std/std_path.h
  Common/std/std_process.h
  Common/std/std_sha1.h
  Common/std/std_string.h
  Common/std/std_thread.h
  Module/BackupLib/BackupMgr.h
  Module/BackupLib/BackupType.h
  Module/BackupLib/BaseDevice.h
  Module/BackupLib/ConfigMgr.h
  Module/BackupLib/MobileBackupTask.h
  Module/BackupLib/mbdb/mbdb.h
  Module/BackupLib/mbdb/mbdb_record.h
  Module/Sync/Backup.h
  Module/Sync/CallBack.h
  Module/Sync/DeviceInfo.h
  Module/Sync/Sync.h
  Module/Sync/SyncFactory.h)

# The folder that a program or library lies in, for the run time's search.
set(krutein_origin "$ORIGIN")
if(APPLE)
  set(krutein_origin "@loader_path")
endif()

# A host that links or loads the library has its log library found beside it; a host's own log library is the
# host's to install.
set_target_properties(krutein PROPERTIES INSTALL_RPATH "${krutein_origin}")
set(krutein_libraries krutein)
if(NOT KRUTEIN_LOG_LIBRARY)
  list(APPEND krutein_libraries krutein_log)
endif()
install(TARGETS ${krutein_libraries} EXPORT krutein
  LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT library NAMELINK_COMPONENT development
  INCLUDES DESTINATION "${krutein_include_dir}")

foreach(header IN LISTS krutein_public_headers)
  get_filename_component(folder "${header}" DIRECTORY)
  install(FILES "${PROJECT_SOURCE_DIR}/${header}" DESTINATION "${krutein_include_dir}/${folder}"
    COMPONENT development)
endforeach()

# find_package(krutein CONFIG)
install(EXPORT krutein FILE kruteinTargets.cmake NAMESPACE krutein:: DESTINATION "${krutein_cmake_dir}"
  COMPONENT development)
configure_package_config_file("${PROJECT_SOURCE_DIR}/cmake/kruteinConfig.cmake.in"
  "${PROJECT_BINARY_DIR}/cmake/kruteinConfig.cmake" INSTALL_DESTINATION "${krutein_cmake_dir}")
write_basic_package_version_file("${PROJECT_BINARY_DIR}/cmake/kruteinConfigVersion.cmake"
  COMPATIBILITY SameMajorVersion)
install(FILES
  "${PROJECT_BINARY_DIR}/cmake/kruteinConfig.cmake"
  "${PROJECT_BINARY_DIR}/cmake/kruteinConfigVersion.cmake"
  DESTINATION "${krutein_cmake_dir}" COMPONENT development)

# pkg-config krutein: its paths are told from where the file lies, so that the whole may be installed or moved
# anywhere.
file(RELATIVE_PATH krutein_prefix_from_pc
  "${CMAKE_INSTALL_PREFIX}/${krutein_pkgconfig_dir}" "${CMAKE_INSTALL_PREFIX}")
string(REGEX REPLACE "/$" "" krutein_prefix_from_pc "${krutein_prefix_from_pc}")
configure_file("${PROJECT_SOURCE_DIR}/cmake/krutein.pc.in" "${PROJECT_BINARY_DIR}/cmake/krutein.pc" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/cmake/krutein.pc" DESTINATION "${krutein_pkgconfig_dir}"
  COMPONENT development)

if(KRUTEIN_BUILD_HOST)
  include(KruteinInstallHost)
endif()
