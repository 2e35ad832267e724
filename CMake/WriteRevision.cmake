# cmake -D SOURCE_DIR=... -D HEADER=... [-D EPOCH=seconds] [-D SILENT=1] -P WriteRevision.cmake
#
# The revision is the number of commits, with an "M" behind it for a modified tree, which the library reports at load.
# The date is that of the commit unless EPOCH, or SOURCE_DATE_EPOCH in the environment, gives another, so that two
# builds of one commit are equal to the byte. Outside a checkout both are fixed.

set(release_revision "1")
set(release_epoch "1790000000")

function(git result)
    execute_process(COMMAND git --no-optional-locks ${ARGN} WORKING_DIRECTORY "${SOURCE_DIR}"
        OUTPUT_VARIABLE output ERROR_QUIET RESULT_VARIABLE status OUTPUT_STRIP_TRAILING_WHITESPACE)
    if(NOT status EQUAL 0)
        set(output "")
    endif()
    set(${result} "${output}" PARENT_SCOPE)
endfunction()

# Not the checkout of somebody who keeps a copy of this tree in his own.
git(top rev-parse --show-toplevel)
get_filename_component(source "${SOURCE_DIR}" REALPATH)
if(top STREQUAL source)
    git(FUNDO_REVISION_TEXT rev-list --count HEAD)
    git(epoch log -1 --format=%ct)
    git(modified status --porcelain --untracked-files=no)
endif()
if(NOT FUNDO_REVISION_TEXT)
    set(FUNDO_REVISION_TEXT "${release_revision}")
    set(epoch "${release_epoch}")
elseif(modified AND NOT SILENT)
    string(APPEND FUNDO_REVISION_TEXT "M")
endif()

if(NOT "${EPOCH}" STREQUAL "")
    set(ENV{SOURCE_DATE_EPOCH} "${EPOCH}")
elseif(NOT DEFINED ENV{SOURCE_DATE_EPOCH})
    set(ENV{SOURCE_DATE_EPOCH} "${epoch}")
endif()
string(TIMESTAMP FUNDO_BUILD_DATE "%b %d %Y" UTC)

configure_file("${CMAKE_CURRENT_LIST_DIR}/FundoBuild.h.in" "${HEADER}" @ONLY)
