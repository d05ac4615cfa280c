# What Debian asks of a build, for every target: its hardening flags, and
# built files that depend on nothing but the sources, so that two builds of
# the same commit give the same package. Included from the top-level
# CMakeLists.txt before any target is made.

option(TESSERA_HARDENING "Compile and link with Debian's hardening flags (from dpkg-buildflags)" ON)

# Stack protector, fortified C library calls, format checks, and relocations
# made read-only and bound at load time, exactly as dpkg-buildflags gives them
# for packages that enable all hardening. Optimisation and debugging
# information stay with the build type. The sanitized builds go without: their
# instrumentation and the fortified calls get in each other's way.
if(TESSERA_HARDENING AND NOT TESSERA_SANITIZE AND NOT TESSERA_FUZZ)
    find_program(TESSERA_DPKG_BUILDFLAGS dpkg-buildflags)
    if(NOT TESSERA_DPKG_BUILDFLAGS)
        message(FATAL_ERROR "The hardening flags come from dpkg-buildflags (Debian package dpkg-dev); "
            "-DTESSERA_HARDENING=OFF builds without them")
    endif()
    foreach(kind CPPFLAGS CXXFLAGS LDFLAGS)
        # Run in the source tree, so that the path map it gives takes the
        # tree's location out of the debugging information. Debian's default
        # map (fixfilepath) would also rewrite the file names of trace lines,
        # which -fmacro-prefix-map already makes relative to the source tree;
        # its form for debugging information only (fixdebugpath) is taken.
        execute_process(
            COMMAND ${CMAKE_COMMAND} -E env "DEB_BUILD_MAINT_OPTIONS=hardening=+all reproducible=-fixfilepath"
                    ${TESSERA_DPKG_BUILDFLAGS} --get ${kind}
            WORKING_DIRECTORY ${CMAKE_SOURCE_DIR}
            OUTPUT_VARIABLE flags OUTPUT_STRIP_TRAILING_WHITESPACE
            COMMAND_ERROR_IS_FATAL ANY)
        separate_arguments(flags UNIX_COMMAND "${flags}")
        list(FILTER flags EXCLUDE REGEX "^-(O.*|g.*)$")
        set(TESSERA_${kind} ${flags})
    endforeach()
    add_compile_options(${TESSERA_CPPFLAGS} ${TESSERA_CXXFLAGS})
    add_link_options(${TESSERA_LDFLAGS})
endif()

# The date that built files carry (the manual's and the manual pages', the
# package's file dates): SOURCE_DATE_EPOCH when the builder gives one, else
# the last commit's. It is kept in a file of the build tree that changes only
# when the date does, so that what is dated with it depends on that file and
# is made again after the next commit.
if(DEFINED ENV{SOURCE_DATE_EPOCH})
    set(TESSERA_SOURCE_DATE_EPOCH $ENV{SOURCE_DATE_EPOCH})
else()
    execute_process(COMMAND git log -1 --format=%ct
        WORKING_DIRECTORY ${CMAKE_SOURCE_DIR}
        OUTPUT_VARIABLE TESSERA_SOURCE_DATE_EPOCH OUTPUT_STRIP_TRAILING_WHITESPACE
        RESULT_VARIABLE result ERROR_QUIET)
    if(result EQUAL 0)
        # A new commit moves the date: configure again after each one.
        execute_process(COMMAND git rev-parse --path-format=absolute --git-path logs/HEAD
            WORKING_DIRECTORY ${CMAKE_SOURCE_DIR}
            OUTPUT_VARIABLE head_log OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
        if(EXISTS "${head_log}")
            set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${head_log}")
        endif()
    else()
        # A tree without history, unpacked from an archive: the date the
        # archive gives the top-level CMakeLists.txt.
        file(TIMESTAMP ${CMAKE_SOURCE_DIR}/CMakeLists.txt TESSERA_SOURCE_DATE_EPOCH "%s" UTC)
    endif()
endif()
if(NOT TESSERA_SOURCE_DATE_EPOCH MATCHES "^[0-9]+$")
    message(FATAL_ERROR "SOURCE_DATE_EPOCH is not a number of seconds: ${TESSERA_SOURCE_DATE_EPOCH}")
endif()
set(TESSERA_SOURCE_DATE_FILE ${CMAKE_BINARY_DIR}/source-date-epoch)
file(CONFIGURE OUTPUT ${TESSERA_SOURCE_DATE_FILE} CONTENT "${TESSERA_SOURCE_DATE_EPOCH}\n")

# Compiled-in resources would otherwise carry their files' dates, which
# differ between checkouts of the same commit; nothing reads them.
set(CMAKE_AUTORCC_OPTIONS --format-version 1)
