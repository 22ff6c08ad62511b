# Checks of the source text: test `format`; targets `tidy` (clang-tidy) and `cppcheck`.

find_program(VSPSC_CLANG_FORMAT NAMES clang-format-14 clang-format)
if(VSPSC_BUILD_TESTS AND VSPSC_CLANG_FORMAT)
    add_test(NAME format COMMAND ${PROJECT_SOURCE_DIR}/tools/check-format.sh)
    set_tests_properties(format PROPERTIES ENVIRONMENT "CLANG_FORMAT=${VSPSC_CLANG_FORMAT}")
endif()

add_custom_target(tidy COMMAND ${PROJECT_SOURCE_DIR}/tools/check-tidy.sh ${PROJECT_BINARY_DIR} all USES_TERMINAL VERBATIM)

find_program(VSPSC_CPPCHECK cppcheck)
if(VSPSC_CPPCHECK)
    file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/cppcheck)
    add_custom_target(
        cppcheck
        COMMAND ${VSPSC_CPPCHECK} -q --error-exitcode=1 --enable=warning,portability --std=c++20 --max-configs=1
                --cppcheck-build-dir=${PROJECT_BINARY_DIR}/cppcheck --suppressions-list=tools/cppcheck-suppressions.txt
                --suppress=toomanyconfigs -DVSP_LEVEL=y8 -Iinclude -Isrc -Ivoice -Itools/vsps src voice tools/vsps
        WORKING_DIRECTORY ${PROJECT_SOURCE_DIR}
        USES_TERMINAL VERBATIM)
endif()
