# Fails when a lower layer includes a higher one. Run with cmake -P, with ROOT set to the project's folder.
# No file below `folder` may include anything that matches one of the patterns.
function(forbid folder)
  file(GLOB_RECURSE sources "${ROOT}/${folder}/*.h" "${ROOT}/${folder}/*.cpp" "${ROOT}/${folder}/*.mm")
  foreach(source IN LISTS sources)
    foreach(pattern IN LISTS ARGN)
      file(STRINGS "${source}" lines REGEX "^#(include|import) \"${pattern}")
      if(lines)
        message(SEND_ERROR "${source}: ${lines}")
      endif()
    endforeach()
  endforeach()
endfunction()

forbid(Common/std Common/ini Common/log Module/ Host/ Tools/ Tests/)
forbid(Common/log Common/std Module/ Host/ Tools/ Tests/)
forbid(Common/ini Module/ Host/ Tools/ Tests/)
forbid(Module/BackupLib Module/Sync/Backup Module/Sync/Sync Module/Sync/Device Host/ Tools/ Tests/)
forbid(Module/BackupLib/mbdb Common/std Common/ini Module/Sync Module/BackupLib/[A-Z] Host/ Tools/ Tests/)
forbid(Module/Sync Host/ Tools/ Tests/)
forbid(Host Tools/ Tests/)
forbid(Host/BackupFormat Host/Archiver Host/kruteinctl Host/SampleDevice)

# The reference host uses public headers only.
forbid(Host/kruteinctl Common/std/platform Common/std/format Common/std/text Common/std/sha1
  Module/BackupLib/JobState Module/BackupLib/MessagePipe Common/log)

# A platform difference lives in one place.
file(GLOB_RECURSE sources "${ROOT}/Common/*" "${ROOT}/Module/*")
foreach(source IN LISTS sources)
  file(STRINGS "${source}" lines REGEX "__APPLE__|__linux__")
  if(lines)
    message(SEND_ERROR "${source}: ${lines}")
  endif()
endforeach()
