# cmake -DNM=... -DLIBRARY=... -P Exports.cmake
# libSmbusProto shows its users the socket and the messages, and nothing else.
set(socket "^PlatformLibrary::PLSocket::(setup|sendRequestWait)\\(")
set(messages "(^|for |<)Smbus::|Smbus_2eproto")

execute_process(COMMAND ${NM} -DC --defined-only ${LIBRARY}
  OUTPUT_VARIABLE symbols COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCHALL "[^\n]+" symbols "${symbols}")
list(TRANSFORM symbols REPLACE "^[0-9a-f]+ . " "")

set(others ${symbols})
list(FILTER others EXCLUDE REGEX "${socket}|${messages}")
if(others)
  message(FATAL_ERROR "exported, but nobody's business: ${others}")
endif()
foreach(wanted ${socket} ${messages})
  set(found ${symbols})
  list(FILTER found INCLUDE REGEX "${wanted}")
  if(NOT found)
    message(FATAL_ERROR "not exported: ${wanted}")
  endif()
endforeach()
