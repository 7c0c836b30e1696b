# What the shipped library promises of itself: cmake -DLIBRARY=… -DOBJDUMP=… -DCONFIG=… -P check_library.cmake
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

string(REGEX MATCHALL "DLL Name: [^\n]+" imports "${dump}")
list(TRANSFORM imports REPLACE "DLL Name: " "")
list(TRANSFORM imports TOLOWER)
foreach(import IN LISTS imports)
    if(NOT import MATCHES
            "^(advapi32|comctl32|comdlg32|gdi32|kernel32|msvcrt|ole32|oleaut32|shell32|user32|ws2_32)\\.dll$")
        message(SEND_ERROR "imports ${import}, which is no part of the system")
    endif()
endforeach()
list(LENGTH imports count)
if(count LESS 3)
    message(SEND_ERROR "imports could not be read: ${imports}")
endif()

# Dynamic base, high-entropy addresses, no execution of data.
string(REGEX MATCH "DllCharacteristics[\t ]+([0-9a-f]+)" found "${dump}")
expect_equal("DllCharacteristics" "${CMAKE_MATCH_1}" "00000160")

file(SIZE ${LIBRARY} size)
if(CONFIG STREQUAL "Release" AND size GREATER 409600)
    message(SEND_ERROR "${size} bytes are more than 400 KB")
endif()

get_filename_component(folder ${LIBRARY} DIRECTORY)
file(GLOB shipped RELATIVE ${folder} ${folder}/*)
list(SORT shipped)
expect_equal("shipped files" "${shipped}" "WriteMetadataFile.dll;XSLT")
