# What the build knows of its source, in Generated/FundoBuild.h: the revision, the date, the address.
#
# The header is brought up to date by every build, so that a commit or a change made after configuring shows, and is
# written only when it changes. Builds with tests leave out the mark of a modified tree: test programs start silently.

set(FUNDO_SOURCE_ADDRESS "git://fundo" CACHE STRING "Address of the source tree in the include-version table")

set(FUNDO_REVISION_HEADER "${PROJECT_BINARY_DIR}/Generated/FundoBuild.h")
add_custom_target(FundoRevision
    COMMAND "${CMAKE_COMMAND}"
        -D "SOURCE_DIR=${PROJECT_SOURCE_DIR}"
        -D "HEADER=${FUNDO_REVISION_HEADER}"
        -D "FUNDO_SOURCE_ADDRESS=${FUNDO_SOURCE_ADDRESS}"
        -D "EPOCH=$ENV{SOURCE_DATE_EPOCH}"
        -D "SILENT=$<BOOL:${FUNDO_BUILD_TESTS}>"
        -P "${PROJECT_SOURCE_DIR}/CMake/WriteRevision.cmake"
    BYPRODUCTS "${FUNDO_REVISION_HEADER}"
    COMMENT "Reading the revision"
    VERBATIM)
