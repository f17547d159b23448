# cmake -DROOMS=EXECUTABLE -DFOLDER=FOLDER -P check-rooms.cmake: fails unless a quick run of bench/rooms
# finds a figure for everything that it measures. How large they are is not looked at.
cmake_minimum_required(VERSION 3.25)

set(report ${FOLDER}/quick-rooms.json)
set(columns ${FOLDER}/quick-rooms.tsv)
file(REMOVE ${report} ${columns})
execute_process(COMMAND ${ROOMS} --quick --json ${report} --tsv ${columns}
                RESULT_VARIABLE status OUTPUT_VARIABLE output ERROR_VARIABLE errors)
if(NOT status EQUAL 0)
  message(FATAL_ERROR "rooms ended with ${status}:\n${output}${errors}")
endif()

file(READ ${report} json)
foreach(path "loads;0;ratioMedian" "loads;0;rounds;0;floor;cpuMillisecondsPerSecond"
             "loads;1;rounds;0;server;cpuMillisecondsPerSecond"
             "loads;1;rounds;0;server;gapMillisecondsP99" "loads;1;rounds;0;server;receiptsPerInput"
             "crowds;0;floor;0;gapMillisecondsP99" "crowds;0;server;0;gapMillisecondsP99"
             "memory;residentKiB" "memory;proportionalKiB" "startMilliseconds;serverMedian")
  string(JSON figure GET "${json}" ${path})
  if(NOT figure MATCHES "^[0-9.e+-]+$" OR NOT figure GREATER 0)
    message(FATAL_ERROR "${path} is ${figure}")
  endif()
endforeach()

# A busy machine may not hold a single crowd.
foreach(program floor server)
  string(JSON figure GET "${json}" capacity ${program} rooms)
  if(NOT figure MATCHES "^[0-9.e+-]+$")
    message(FATAL_ERROR "capacity of the ${program} is ${figure}")
  endif()
endforeach()

file(STRINGS ${columns} lines)
list(LENGTH lines count)
if(count LESS 6)
  message(FATAL_ERROR "${columns} has ${count} lines of columns")
endif()
