# The exports and the hardening of the built library, checked with binutils. Run with
# -D LIBRARY=... -D NM=... -D READELF=... -D QT_CORE=libQt5Core.so.5

cmake_minimum_required(VERSION 3.25)

function(output_of variable)
    execute_process(COMMAND ${ARGN} OUTPUT_VARIABLE text COMMAND_ERROR_IS_FATAL ANY)
    set(${variable} "${text}" PARENT_SCOPE)
endfunction()

function(expect_same what actual expected)
    if(NOT actual STREQUAL expected)
        message(SEND_ERROR "${what}:\n  ${actual}\nexpected:\n  ${expected}")
    endif()
endfunction()

function(expect_match what text pattern)
    if(NOT text MATCHES "${pattern}")
        message(SEND_ERROR "${what}: nothing matches '${pattern}' in\n${text}")
    endif()
endfunction()

# --- Exported: the eighteen names and nothing else ---
output_of(text ${NM} -D --defined-only --format=posix ${LIBRARY})
string(REGEX REPLACE "([^ \n]+) ([A-Za-z])[^\n]*\n" "\\1 \\2;" exported "${text}")
list(SORT exported)
file(READ ${CMAKE_CURRENT_LIST_DIR}/../../driver/ostrel_kmr.h header)
string(REGEX MATCHALL "    entry\\([a-zA-Z]+" expected "${header}")
list(TRANSFORM expected REPLACE " *entry\\((.*)" "intf_\\1 T")
list(LENGTH expected functions)
expect_same("functions in the header's table" ${functions} 18)
list(REMOVE_ITEM exported "")
list(SORT expected)
expect_same("exported symbols" "${exported}" "${expected}")

# --- Hidden, but in the symbol table: a debugger finds them, the build does not strip ---
output_of(text ${NM} -C --defined-only ${LIBRARY})
foreach(function
    check8Num a2i_ddd_DD bCheckSplitter multiCp_dec _setBitValue _setDataAreaMonitorFlag
    groupingKey rcpAddrToVar getFrame sToS uppers getReadFrame getWriteFrame check_rcv_data
    getErrorInfo write_FailOrSuc dealListWhenFinish getIndexOfDataArea
    _OnlyOneDataTypeDataChange _wordDataChange write_saveDataToArea)
    expect_match("internal function" "${text}" " t ${function}\\(")
endforeach()
expect_match("driver object" "${text}" " [bd] driver\n")

# --- Dynamic section ---
output_of(text ${READELF} -dW ${LIBRARY})
expect_match("name" "${text}" "\\(SONAME\\)[^\n]*\\[libostrel_kmr\\.so\\.1\\]")
expect_match("binding at load" "${text}" "BIND_NOW")
expect_match("own symbols first" "${text}" "SYMBOLIC")
if(text MATCHES "\\((RPATH|RUNPATH|TEXTREL)\\)")
    message(SEND_ERROR "${CMAKE_MATCH_1} in the dynamic section:\n${text}")
endif()

string(REGEX MATCHALL "\\(NEEDED\\)[^\n]*\\[[^\n]*\\]" needed "${text}")
list(TRANSFORM needed REPLACE ".*\\[(.*)\\]" "\\1")
if(NOT QT_CORE IN_LIST needed)
    message(SEND_ERROR "${QT_CORE} is not needed: ${needed}")
endif()
list(REMOVE_ITEM needed ${QT_CORE} libstdc++.so.6 libm.so.6 libgcc_s.so.1 libc.so.6)
list(FILTER needed EXCLUDE REGEX "^ld[-a-z0-9]*\\.so\\.[0-9]$") # the loader, on ARM
expect_same("further libraries" "${needed}" "")

# --- Stack protector: a damaged stack ends the program ---
output_of(text ${NM} -D --undefined-only ${LIBRARY})
expect_match("stack protector" "${text}" " U __stack_chk_fail")

# --- Segments ---
output_of(text ${READELF} -lW ${LIBRARY})
expect_match("read-only after relocation" "${text}" "GNU_RELRO")
expect_match("stack" "${text}" "GNU_STACK[^\n]* RW +0x")
if(text MATCHES " RWE ")
    message(SEND_ERROR "writable code:\n${text}")
endif()
