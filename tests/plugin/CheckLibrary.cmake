# cmake -DPLUGIN=... -DREADELF=... -DNM=... [-DSANITIZED=1] -P CheckLibrary.cmake
# The library's face: what it needs of a machine, and the seven names it offers.

execute_process(COMMAND ${READELF} -d ${PLUGIN} OUTPUT_VARIABLE dynamic COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCHALL "\\(NEEDED\\)[^\n]*\\[[^]]*\\]" needed "${dynamic}")
if(NOT needed)
  message(FATAL_ERROR "No needed libraries found in:\n${dynamic}")
endif()
if(NOT SANITIZED)
  foreach(line IN LISTS needed)
    string(REGEX REPLACE ".*\\[(.*)\\]" "\\1" name "${line}")
    if(NOT name MATCHES "^(libstabframework\\.so|libstdc\\+\\+\\.so|libc\\.so|libm\\.so|libgcc_s\\.so|ld-linux)")
      message(SEND_ERROR "The plug-in must not need ${name}")
    endif()
  endforeach()
endif()

execute_process(COMMAND ${NM} -D --defined-only ${PLUGIN} OUTPUT_VARIABLE symbols
                COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCHALL "[0-9a-f]+ [A-Za-z] [^\n]+" rows "${symbols}")
set(exported)
foreach(row IN LISTS rows)
  string(REGEX REPLACE "^[0-9a-f]+ ([A-Za-z]) (.*)$" "\\1 \\2" row "${row}")
  list(APPEND exported "${row}")
endforeach()
list(SORT exported)
set(expected "T _Create" "T _Properties" "T _QTX_PluginVersion" "T _ReadProperties" "T _Resource"
             "T _SendTheMessage" "T _WriteProperties")
if(NOT exported STREQUAL expected)
  message(SEND_ERROR "Exported: ${exported}\nExpected: ${expected}")
endif()
