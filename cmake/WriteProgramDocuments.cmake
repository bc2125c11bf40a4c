# SPDX-License-Identifier: Apache-2.0
# cmake -DPROGRAM=.. -DEMULATOR=.. -DPAGE=..1.in -DFOLDER=.. -P: see ProgramDocuments.cmake.
function(ask form variable)
    execute_process(COMMAND ${EMULATOR} ${PROGRAM} --documentation ${form}
        OUTPUT_VARIABLE text COMMAND_ERROR_IS_FATAL ANY)
    set(${variable} "${text}" PARENT_SCOPE)
endfunction()

ask(man OPTIONS)
ask(man-exits EXIT_STATUS)
get_filename_component(name ${PAGE} NAME_WLE)
configure_file(${PAGE} ${FOLDER}/${name} @ONLY)
foreach(shell bash zsh)
    ask(${shell} text)
    file(WRITE ${FOLDER}/completion.${shell} "${text}")
endforeach()
