# Compares the exported names of LIBRARY with the kept list EXPECTED.
execute_process(COMMAND "${NM}" --dynamic --defined-only --demangle --format=posix "${LIBRARY}"
  OUTPUT_VARIABLE output COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCHALL "[^\n]+" lines "${output}")
foreach(line ${lines})
  # name, kind, address, size; a demangled name may hold blanks.
  string(REGEX REPLACE " [A-Za-z] [0-9a-f]+( [0-9a-f]+)?$" "" name "${line}")
  list(APPEND actual "${name}")
endforeach()
list(REMOVE_DUPLICATES actual)
list(SORT actual)

file(STRINGS "${EXPECTED}" expected)
set(missing ${expected})
list(REMOVE_ITEM missing ${actual})
set(surplus ${actual})
list(REMOVE_ITEM surplus ${expected})
if(missing OR surplus)
  list(JOIN missing "\n  " missing)
  list(JOIN surplus "\n  " surplus)
  message(FATAL_ERROR "The exports differ from the kept list.\nmissing:\n  ${missing}\nsurplus:\n  ${surplus}")
endif()
