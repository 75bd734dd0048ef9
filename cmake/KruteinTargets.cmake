# What all targets of the project have in common, and the bundle that every program which uses the library
# lives in.
include_guard(GLOBAL)
find_package(Threads REQUIRED)
find_package(PkgConfig REQUIRED)

# Language, warnings, sanitizers and the include root. Log lines and messages carry source files as paths from
# the project's root, whatever folder the project was built in.
function(krutein_target_defaults target)
  set_target_properties(${target} PROPERTIES
    CXX_STANDARD 17
    CXX_STANDARD_REQUIRED ON
    CXX_EXTENSIONS OFF
    CXX_VISIBILITY_PRESET hidden
    VISIBILITY_INLINES_HIDDEN ON
    POSITION_INDEPENDENT_CODE ON)
  target_include_directories(${target} PRIVATE ${PROJECT_SOURCE_DIR})
  target_compile_options(${target} PRIVATE
    -Wall -Wextra -Wshadow -Wconversion
    -fmacro-prefix-map=${PROJECT_SOURCE_DIR}/=
    $<$<BOOL:${KRUTEIN_WARNINGS_AS_ERRORS}>:-Werror>)
  if(KRUTEIN_SANITIZE)
    set(sanitize -fsanitize=${KRUTEIN_SANITIZE} -fno-omit-frame-pointer)
    if(KRUTEIN_SANITIZE MATCHES undefined)
      list(APPEND sanitize -fno-sanitize-recover=undefined)
    endif()
    # With sanitizers GCC sees uninitialized memory inside of its own <regex>.
    target_compile_options(${target} PRIVATE ${sanitize} $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
    target_link_options(${target} PRIVATE ${sanitize})
  endif()
endfunction()

# Builds a program into <folder>/Contents/MacOS. The library finds the backup tool in Contents/Frameworks and
# its configuration in Resources/Config, both from the path of the running program.
function(krutein_place_in_bundle target folder)
  set_target_properties(${target} PROPERTIES RUNTIME_OUTPUT_DIRECTORY "${folder}/Contents/MacOS")
endfunction()

# Builds the backup tool of a bundle. It always bears the one name that the library looks for and kills.
function(krutein_place_tool_in_bundle target folder)
  set_target_properties(${target} PROPERTIES
    OUTPUT_NAME HandsetArchiver
    RUNTIME_OUTPUT_DIRECTORY "${folder}/Contents/Frameworks")
endfunction()

# What every library for the logging contract has in common: libraries of this name can stand in for each other
# when a program is loaded.
function(krutein_log_properties target)
  set_target_properties(${target} PROPERTIES OUTPUT_NAME krutein_log VERSION 1.0.0 SOVERSION 1)
endfunction()
