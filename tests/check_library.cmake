# Checks imports and flags of the shipped library: cmake -DLIBRARY=… -DOBJDUMP=… -DCONFIG=… -P check_library.cmake
execute_process(COMMAND ${OBJDUMP} -p ${LIBRARY} OUTPUT_VARIABLE dump COMMAND_ERROR_IS_FATAL ANY)

function(expect_equal what actual expected)
    if(NOT "${actual}" STREQUAL "${expected}")
        message(SEND_ERROR "${what}:\n  is       ${actual}\n  expected ${expected}")
    endif()
endfunction()

string(REGEX MATCHALL "\n\t\\[ *[0-9]+\\] [A-Za-z_0-9@]+" rows "${dump}")
list(TRANSFORM rows REPLACE ".*\\] " "")
list(SORT rows)
expect_equal("exports" "${rows}" "DSP_AfterConversion;DSP_BeginConversion;DSP_Create;DSP_Destroy;DSP_EndConversion;\
DSP_Get;DSP_PassAudioBlock;DSP_PassNonLive;DSP_RemoveConfigBit;DSP_Set;DSP_ShowConfigBit")

# What the library calls, one line for each other library that it needs; only what ships is compared.
string(REGEX REPLACE "\n[ \t]+[0-9a-f]+[ \t]+[0-9]+[ \t]+([A-Za-z_0-9]+)" " \\1" imports "${dump}")
string(REGEX MATCHALL "DLL Name: [^\n]+\n[^\n]+" imports "${imports}")
list(TRANSFORM imports REPLACE "DLL Name: ([^\n]+)\n[^\n]*Bound-To" "\\1:")
list(JOIN imports "\n" imports)
file(WRITE ${CMAKE_CURRENT_BINARY_DIR}/imports.txt "${imports}\n")
file(READ ${CMAKE_CURRENT_LIST_DIR}/data/imports.txt expected)
if(CONFIG STREQUAL "Release")
    expect_equal("imports, as in ${CMAKE_CURRENT_BINARY_DIR}/imports.txt" "${imports}\n" "${expected}")
endif()

# Dynamic base, high-entropy addresses, no execution of data.
string(REGEX MATCH "DllCharacteristics[\t ]+([0-9a-f]+)" found "${dump}")
expect_equal("DllCharacteristics" "${CMAKE_MATCH_1}" "00000160")

# Nothing that runs can be written to; the library can be moved.
execute_process(COMMAND ${OBJDUMP} -h ${LIBRARY} OUTPUT_VARIABLE sections COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCHALL "[^\n]*CODE[^\n]*" code "${sections}")
list(FILTER code EXCLUDE REGEX "READONLY")
expect_equal("writable code" "${code}" "")
if(NOT sections MATCHES " \\.text .* \\.reloc ")
    message(SEND_ERROR "no code, or no relocations: ${sections}")
endif()

# Functions check their stack: many call the one that ends the process.
execute_process(COMMAND ${OBJDUMP} -d --no-show-raw-insn ${LIBRARY} OUTPUT_VARIABLE code COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCH "([0-9a-f]+):[^\n]*\n[^\n]*mov +\\$0x17,%ecx\n[^\n]*\n[^\n]*\n[^\n]*\n[^\n]*mov +\\$0x2,%ecx\n[^\n]*int +\\$0x29"
    found "${code}") # asks for PF_FASTFAIL_AVAILABLE first
string(REGEX MATCHALL "call +(0x)?${CMAKE_MATCH_1}[ \n]" calls "${code}")
list(LENGTH calls count)
if(NOT found OR count LESS 20)
    message(SEND_ERROR "${count} calls of the stack check's failure: '${found}'")
endif()

# The ids that the library passes to the XML parser; some parsers would accept wrong ones.
file(READ ${LIBRARY} bytes HEX)
foreach(id IN ITEMS
    F6D90F11-9C73-11D3-B32E-00C04F990BB4 # the document's class
    F6D90F12-9C73-11D3-B32E-00C04F990BB4 # free-threaded, for the style sheet
    2933BF94-7B36-11D2-B20E-00C04F983E60 # the template's class
    2933BF81-7B36-11D2-B20E-00C04F983E60 # their interfaces
    2933BF93-7B36-11D2-B20E-00C04F983E60
    2933BF92-7B36-11D2-B20E-00C04F983E60 # the processor's
    3EFAA426-272F-11D2-836F-0000F87A7782) # the parse error's
    string(REGEX REPLACE "(..)(..)(..)(..)-(..)(..)-(..)(..)-(.*)" "\\4\\3\\2\\1\\6\\5\\8\\7\\9" stored ${id})
    string(REPLACE "-" "" stored ${stored})
    string(TOLOWER ${stored} stored)
    string(FIND "${bytes}" ${stored} found)
    if(found EQUAL -1)
        message(SEND_ERROR "${id} is not in the library")
    endif()
endforeach()

file(SIZE ${LIBRARY} size)
if(CONFIG STREQUAL "Release" AND size GREATER 409600)
    message(SEND_ERROR "${size} bytes are more than 400 KB")
endif()

get_filename_component(folder ${LIBRARY} DIRECTORY)
file(GLOB shipped RELATIVE ${folder} ${folder}/*)
list(SORT shipped)
expect_equal("shipped files" "${shipped}" "WriteMetadataFile.dll;XSLT")
