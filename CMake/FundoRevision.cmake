# What the build knows of its source: the revision, the number of commits, and the date.
#
# A build from a modified tree ends its revision in "M", which the library reports at load; builds with tests leave the
# mark out, so that test programs start silently. The date is that of the commit, or SOURCE_DATE_EPOCH, so that two
# builds of one commit are equal to the byte.

set(FUNDO_SOURCE_ADDRESS "git://fundo" CACHE STRING "Address of the source tree in the include-version table")
set(FUNDO_RELEASE_REVISION "1")
set(FUNDO_RELEASE_EPOCH "1790000000")

function(fundo_git result)
    execute_process(COMMAND git ${ARGN} WORKING_DIRECTORY "${PROJECT_SOURCE_DIR}"
        OUTPUT_VARIABLE output ERROR_QUIET RESULT_VARIABLE status OUTPUT_STRIP_TRAILING_WHITESPACE)
    if(NOT status EQUAL 0)
        set(output "")
    endif()
    set(${result} "${output}" PARENT_SCOPE)
endfunction()

fundo_git(top rev-parse --show-toplevel)
if(top STREQUAL PROJECT_SOURCE_DIR)
    fundo_git(FUNDO_REVISION_TEXT rev-list --count HEAD)
    fundo_git(epoch log -1 --format=%ct)
    fundo_git(modified status --porcelain --untracked-files=no)
    if(modified AND NOT FUNDO_BUILD_TESTS)
        string(APPEND FUNDO_REVISION_TEXT "M")
    endif()
    # A new commit configures again.
    fundo_git(log rev-parse --git-path logs/HEAD)
    get_filename_component(log "${log}" ABSOLUTE BASE_DIR "${PROJECT_SOURCE_DIR}")
    if(EXISTS "${log}")
        set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${log}")
    endif()
endif()
if(NOT FUNDO_REVISION_TEXT)
    set(FUNDO_REVISION_TEXT "${FUNDO_RELEASE_REVISION}")
    set(epoch "${FUNDO_RELEASE_EPOCH}")
endif()

if(NOT DEFINED ENV{SOURCE_DATE_EPOCH})
    set(ENV{SOURCE_DATE_EPOCH} "${epoch}")
    string(TIMESTAMP FUNDO_BUILD_DATE "%b %d %Y" UTC)
    unset(ENV{SOURCE_DATE_EPOCH})
else()
    string(TIMESTAMP FUNDO_BUILD_DATE "%b %d %Y" UTC)
endif()

configure_file("${PROJECT_SOURCE_DIR}/CMake/FundoBuild.h.in" "${PROJECT_BINARY_DIR}/Generated/FundoBuild.h" @ONLY)
