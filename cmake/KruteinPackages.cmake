# The Debian packages: one for each component. scripts/package builds them.
set(KRUTEIN_PACKAGE_RELEASE 1 CACHE STRING "Number of the packaging, behind the version")
set(KRUTEIN_PACKAGE_CONTACT "krutein maintainers <maintainers@krutein.invalid>" CACHE STRING
  "Whom the packages name as their maintainer")

set(krutein_package_library libkrutein${PROJECT_VERSION_MAJOR})
set(krutein_package_development libkrutein-dev)
set(krutein_package_host kruteinctl)

# Each package's copyright, changes of the project and of the packaging.
set(doc "${PROJECT_BINARY_DIR}/packaging")
configure_file("${PROJECT_SOURCE_DIR}/packaging/debian/changelog.in" "${doc}/changelog.Debian" @ONLY)
configure_file("${PROJECT_SOURCE_DIR}/CHANGELOG.md" "${doc}/changelog" COPYONLY)
add_custom_command(OUTPUT "${doc}/changelog.Debian.gz" "${doc}/changelog.gz"
  COMMAND gzip -9 -n -k -f "${doc}/changelog.Debian" "${doc}/changelog"
  DEPENDS "${doc}/changelog.Debian" "${doc}/changelog")
add_custom_target(krutein_changelogs ALL DEPENDS "${doc}/changelog.Debian.gz" "${doc}/changelog.gz")
foreach(component library development host)
  install(FILES
    "${PROJECT_SOURCE_DIR}/packaging/debian/copyright" "${doc}/changelog.Debian.gz" "${doc}/changelog.gz"
    DESTINATION "${CMAKE_INSTALL_DATADIR}/doc/${krutein_package_${component}}" COMPONENT ${component})
endforeach()
install(FILES "${PROJECT_SOURCE_DIR}/packaging/debian/${krutein_package_library}.lintian-overrides"
  RENAME ${krutein_package_library} DESTINATION "${CMAKE_INSTALL_DATADIR}/lintian/overrides" COMPONENT library)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME ${PROJECT_NAME})
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")
set(CPACK_PACKAGE_DIRECTORY "${PROJECT_BINARY_DIR}/packages")
set(CPACK_PACKAGING_INSTALL_PREFIX "${CMAKE_INSTALL_PREFIX}")
set(CPACK_COMPONENTS_ALL library development host)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SOURCE ${PROJECT_NAME})
set(CPACK_DEBIAN_PACKAGE_RELEASE ${KRUTEIN_PACKAGE_RELEASE})
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "${KRUTEIN_PACKAGE_CONTACT}")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${PROJECT_BINARY_DIR}/lib")
# The packages of one build belong together.
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
set(CPACK_COMPONENT_DEVELOPMENT_DEPENDS library)
set(CPACK_COMPONENT_HOST_DEPENDS library)

foreach(component library development host)
  string(TOUPPER ${component} COMPONENT)
  set(CPACK_DEBIAN_${COMPONENT}_PACKAGE_NAME ${krutein_package_${component}})
endforeach()

# What other packages that link the library depend on; and the search for libraries learns of it by a trigger.
configure_file("${PROJECT_SOURCE_DIR}/packaging/debian/shlibs.in" "${doc}/shlibs" @ONLY)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA
  "${doc}/shlibs" "${PROJECT_SOURCE_DIR}/packaging/debian/triggers")
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_DEPENDS procps)  # it stops its tool with pkill
set(CPACK_COMPONENT_LIBRARY_DESCRIPTION "library that backs up and restores iOS devices
A desktop application loads it to back up, restore and inspect an iOS device:
whole, or the data of single apps. It drives a backup tool that the
application brings along.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION "library that backs up and restores iOS devices - development files
The public headers of krutein, and what CMake and pkg-config need to find it.")

set(CPACK_DEBIAN_HOST_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_HOST_PACKAGE_RECOMMENDS usbmuxd)
set(CPACK_COMPONENT_HOST_DESCRIPTION "back up, restore and inspect iOS devices
The command line for krutein: full backups and backups of single apps,
restores, and a look into what there is. It comes with a backup tool that
plays sample devices.")

include(CPack)
