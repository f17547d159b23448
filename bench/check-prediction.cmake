# cmake -DPREDICTION=EXECUTABLE -DFOLDER=FOLDER -P check-prediction.cmake: fails unless a short run of
# bench/prediction finds figures that make sense on every line. How good they are is not looked at: the
# machine may be busy.
cmake_minimum_required(VERSION 3.25)

set(report ${FOLDER}/short-prediction.json)
set(columns ${FOLDER}/short-prediction.tsv)
file(REMOVE ${report} ${columns})
execute_process(COMMAND ${PREDICTION} --lives 1 --seconds 3 --json ${report} --tsv ${columns}
                RESULT_VARIABLE status OUTPUT_VARIABLE output ERROR_VARIABLE errors)
if(NOT status EQUAL 0)
  message(FATAL_ERROR "prediction ended with ${status}:\n${output}${errors}")
endif()

file(READ ${report} json)
string(JSON lines LENGTH "${json}")
if(NOT lines EQUAL 4)
  message(FATAL_ERROR "figures of ${lines} lines:\n${output}")
endif()
foreach(line RANGE 3)
  foreach(path snapshots exact "hypotheses;mean" "hypotheses;max" "microseconds;p99" "eye;count"
               "atItsTick;count")
    string(JSON figure GET "${json}" ${line} ${path})
    if(NOT figure MATCHES "^[0-9.e+-]+$" OR NOT figure GREATER 0)
      message(FATAL_ERROR "line ${line}: ${path} is ${figure}\n${output}${errors}")
    endif()
  endforeach()
  string(JSON untold LENGTH "${json}" ${line} livesUntold)
  if(NOT untold EQUAL 0)
    message(FATAL_ERROR "line ${line}: the truth is unknown\n${output}${errors}")
  endif()
endforeach()

file(STRINGS ${columns} rows)
list(LENGTH rows count)
if(count LESS 100)
  message(FATAL_ERROR "${columns} has ${count} rows")
endif()
