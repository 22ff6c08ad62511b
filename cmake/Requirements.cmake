# What the optional parts need beyond the compiler. A part whose option is AUTO is left out where that is not installed; one
# that is asked for stops the configuration.

# vspsc_needs(OPTION PART FOUND-VARIABLE PACKAGE...): the variables tell what was found, the packages are Debian's.
function(vspsc_needs option part)
    foreach(i RANGE 2 ${ARGC} 2)
        if(i LESS ARGC AND NOT ${ARGV${i}})
            math(EXPR next "${i} + 1")
            list(APPEND missing ${ARGV${next}})
        endif()
    endforeach()
    if(NOT missing)
        return()
    endif()
    list(JOIN missing " " missing)
    if(NOT ${option} STREQUAL "AUTO")
        message(FATAL_ERROR "${part} need more packages: apt-get install ${missing}\nor configure with -D${option}=OFF")
    endif()
    message(NOTICE "-- ${part} are left out; they need more packages: apt-get install ${missing}")
    set(${option} OFF PARENT_SCOPE)
endfunction()

if(VSPSC_BUILD_TOOLS)
    find_package(PkgConfig QUIET)
    if(PkgConfig_FOUND)
        pkg_check_modules(sndfile QUIET IMPORTED_TARGET sndfile)
        pkg_check_modules(soxr QUIET IMPORTED_TARGET soxr)
    endif()
    find_package(CLI11 QUIET)
    find_package(nlohmann_json QUIET)
    vspsc_needs(
        VSPSC_BUILD_TOOLS "The tools"
        PkgConfig_FOUND pkg-config sndfile_FOUND libsndfile1-dev soxr_FOUND libsoxr-dev CLI11_FOUND libcli11-dev
        nlohmann_json_FOUND nlohmann-json3-dev)
endif()
if(VSPSC_BUILD_TESTS)
    find_package(GTest QUIET)
    find_program(VSPSC_PYTEST NAMES pytest-3 pytest)
    find_program(VSPSC_PYTHON python3 PATHS /usr/bin NO_DEFAULT_PATH) # the one that has Debian's python3-pyelftools
    set(elftools_FOUND FALSE)
    if(VSPSC_PYTHON)
        execute_process(COMMAND ${VSPSC_PYTHON} -c "import elftools" RESULT_VARIABLE result OUTPUT_QUIET ERROR_QUIET)
        if(result EQUAL 0)
            set(elftools_FOUND TRUE)
        endif()
    endif()
    vspsc_needs(VSPSC_BUILD_TESTS "The tests" GTest_FOUND libgtest-dev VSPSC_PYTEST python3-pytest elftools_FOUND
                python3-pyelftools)
endif()
if(VSPSC_BUILD_BENCH)
    find_package(benchmark QUIET)
    vspsc_needs(VSPSC_BUILD_BENCH "The benchmarks" benchmark_FOUND libbenchmark-dev)
endif()
