# Expands EXAMPLE.tl with TLEXPAND into the folder WORK, compares the result with EXAMPLE.cpp, compiles
# it with COMPILER and runs it. Any step that fails ends the script with an error.
cmake_path(GET EXAMPLE FILENAME name)
file(REMOVE_RECURSE ${WORK})
file(MAKE_DIRECTORY ${WORK})

function(run)
    execute_process(COMMAND ${ARGV} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

run(${TLEXPAND} -o ${WORK}/${name}.cpp ${EXAMPLE}.tl)
run(${CMAKE_COMMAND} -E compare_files ${WORK}/${name}.cpp ${EXAMPLE}.cpp)
run(${COMPILER} -std=c++17 -Wall -Wextra -Werror -o ${WORK}/${name} ${WORK}/${name}.cpp)
run(${WORK}/${name})
