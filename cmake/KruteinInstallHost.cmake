# The host's bundle stays whole, since its program finds tool and configuration from its own path; the command is
# a link to it. The program's path is the real one, also when it is started through the link.
set(krutein_bundle_dir "${krutein_private_dir}/Krutein.app")

foreach(folder MacOS Frameworks)
  file(RELATIVE_PATH to_lib
    "${CMAKE_INSTALL_PREFIX}/${krutein_bundle_dir}/Contents/${folder}"
    "${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_LIBDIR}")
  string(REGEX REPLACE "/$" "" to_lib "${to_lib}")
  set(krutein_rpath_${folder} "${krutein_origin}/${to_lib}")
endforeach()
set_target_properties(kruteinctl PROPERTIES INSTALL_RPATH "${krutein_rpath_MacOS}")
set_target_properties(krutein_archiver PROPERTIES INSTALL_RPATH "${krutein_rpath_Frameworks}")

install(TARGETS kruteinctl DESTINATION "${krutein_bundle_dir}/Contents/MacOS" COMPONENT host)
install(TARGETS krutein_archiver DESTINATION "${krutein_bundle_dir}/Contents/Frameworks" COMPONENT host)
install(DIRECTORY "${PROJECT_SOURCE_DIR}/Host/Resources" DESTINATION "${krutein_bundle_dir}" COMPONENT host)

file(RELATIVE_PATH krutein_program_from_bin
  "${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_BINDIR}"
  "${CMAKE_INSTALL_PREFIX}/${krutein_bundle_dir}/Contents/MacOS/kruteinctl")
file(MAKE_DIRECTORY "${PROJECT_BINARY_DIR}/links")
file(CREATE_LINK "${krutein_program_from_bin}" "${PROJECT_BINARY_DIR}/links/kruteinctl" SYMBOLIC)
install(FILES "${PROJECT_BINARY_DIR}/links/kruteinctl" DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT host)

# The manual page, and the completions where each shell looks for them.
set(KRUTEIN_ZSH_COMPLETIONS "${CMAKE_INSTALL_DATADIR}/zsh/site-functions" CACHE STRING
  "Where zsh finds completions, below the prefix")
configure_file("${PROJECT_SOURCE_DIR}/Host/man/kruteinctl.1.in" "${PROJECT_BINARY_DIR}/man/kruteinctl.1" @ONLY)
add_custom_command(OUTPUT "${PROJECT_BINARY_DIR}/man/kruteinctl.1.gz"
  COMMAND gzip -9 -n -k -f "${PROJECT_BINARY_DIR}/man/kruteinctl.1"
  DEPENDS "${PROJECT_BINARY_DIR}/man/kruteinctl.1")
add_custom_target(krutein_man ALL DEPENDS "${PROJECT_BINARY_DIR}/man/kruteinctl.1.gz")
install(FILES "${PROJECT_BINARY_DIR}/man/kruteinctl.1.gz" DESTINATION "${CMAKE_INSTALL_MANDIR}/man1" COMPONENT host)
install(FILES "${PROJECT_SOURCE_DIR}/Host/completions/kruteinctl.bash" RENAME kruteinctl
  DESTINATION "${CMAKE_INSTALL_DATADIR}/bash-completion/completions" COMPONENT host)
install(FILES "${PROJECT_SOURCE_DIR}/Host/completions/_kruteinctl"
  DESTINATION "${KRUTEIN_ZSH_COMPLETIONS}" COMPONENT host)
install(FILES "${PROJECT_SOURCE_DIR}/Host/completions/kruteinctl.fish"
  DESTINATION "${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d" COMPONENT host)
