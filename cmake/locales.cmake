find_program(LOCALEDEF localedef REQUIRED)

# A locale is in the byte order of the machine that uses it.
string(TOLOWER "${CMAKE_CXX_BYTE_ORDER}" byte_order)
string(REPLACE "_" "-" byte_order "--${byte_order}")

# Makes real locales from the system's charmaps in a folder of the build, to be found through
# LOCPATH. Each is given as name:definition:charmap.
function(zvutil_locales target folder)
  foreach(entry IN LISTS ARGN)
    string(REPLACE ":" ";" entry ${entry})
    list(GET entry 0 name)
    list(GET entry 1 definition)
    list(GET entry 2 charmap)
    add_custom_command(
        OUTPUT ${folder}/${name}/LC_CTYPE
        COMMAND ${CMAKE_COMMAND} -E make_directory ${folder}
        # Shift-JIS is not quite ASCII, of which localedef warns with its exit status.
        COMMAND ${LOCALEDEF} ${byte_order} -c --quiet --no-archive -i ${definition} -f ${charmap}
                ${folder}/${name} || test -f ${folder}/${name}/LC_CTYPE
        COMMENT "Making the locale ${name}" VERBATIM)
    list(APPEND files ${folder}/${name}/LC_CTYPE)
  endforeach()
  add_custom_target(${target} DEPENDS ${files})
endfunction()
