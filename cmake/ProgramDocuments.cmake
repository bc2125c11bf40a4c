# SPDX-License-Identifier: Apache-2.0
# program_documents(<program>): manual page and completion of a program whose options stand in a table
# of tools/options. <program>.1.in holds what the table does not know.

function(program_documents program)
    set(documents ${CMAKE_CURRENT_BINARY_DIR}/${program}.1
        ${CMAKE_CURRENT_BINARY_DIR}/completion.bash ${CMAKE_CURRENT_BINARY_DIR}/completion.zsh)
    add_custom_command(OUTPUT ${documents}
        COMMAND ${CMAKE_COMMAND} -DPROGRAM=$<TARGET_FILE:${program}>
                "-DEMULATOR=${CMAKE_CROSSCOMPILING_EMULATOR}"
                -DPAGE=${CMAKE_CURRENT_SOURCE_DIR}/${program}.1.in
                -DFOLDER=${CMAKE_CURRENT_BINARY_DIR}
                -P ${CMAKE_SOURCE_DIR}/cmake/WriteProgramDocuments.cmake
        DEPENDS ${program} ${program}.1.in ${CMAKE_SOURCE_DIR}/cmake/WriteProgramDocuments.cmake
        VERBATIM)
    add_custom_target(${program}_documents ALL DEPENDS ${documents})
endfunction()
