# The shared library libvspsvoice.so.1: ready-to-call voice processing on top of the public interface of libvspscy8.

set(vspsvoice_exports "${PROJECT_SOURCE_DIR}/voice/exports.map")
add_library(
    vspsvoice SHARED
    voice/codec/amr/amr.cpp
    voice/codec/amr/decoder.cpp
    voice/codec/amr/encoder.cpp
    voice/codec/amr/forms.cpp
    voice/codec/amr/frame.cpp
    voice/codec/amr/tables.cpp
    voice/codec/amrwb/amrwb.cpp
    voice/codec/amrwb/analysis.cpp
    voice/codec/amrwb/decoder.cpp
    voice/codec/amrwb/encoder.cpp
    voice/codec/amrwb/forms.cpp
    voice/codec/amrwb/frame.cpp
    voice/codec/amrwb/high_band.cpp
    voice/codec/amrwb/tables.cpp
    voice/codec/codec.cpp
    voice/codec/g711/g711.cpp
    voice/codec/g722/g722.cpp
    voice/codec/g7221/g7221.cpp
    voice/codec/g723/decoder.cpp
    voice/codec/g723/encoder.cpp
    voice/codec/g723/frame.cpp
    voice/codec/g723/g723.cpp
    voice/codec/g726/g726.cpp
    voice/codec/g728/adaptation.cpp
    voice/codec/g728/decoder.cpp
    voice/codec/g728/encoder.cpp
    voice/codec/g728/g728.cpp
    voice/codec/g729/backward_analysis.cpp
    voice/codec/g729/decoder.cpp
    voice/codec/g729/encoder.cpp
    voice/codec/g729/fast_encoder.cpp
    voice/codec/g729/frame.cpp
    voice/codec/g729/g729.cpp
    voice/codec/g729/lp_analysis.cpp
    voice/codec/g729/silence_coder.cpp
    voice/codec/gsmfr/decoder.cpp
    voice/codec/gsmfr/encoder.cpp
    voice/codec/gsmfr/frame.cpp
    voice/codec/gsmfr/gsm.cpp
    voice/codec/gsmfr/reconstruction.cpp
    voice/codec/gsmfr/substitution.cpp
    voice/codec/period_repeater.cpp
    voice/codec/rfc4867/frame_type.cpp
    voice/codec/rfc4867/parameter_bits.cpp
    voice/codec/rfc4867/payload.cpp
    voice/codec/rfc4867/storage.cpp
    voice/detect/open_loop.cpp
    voice/detect/reversal_detector.cpp
    voice/detect/speech_detector.cpp
    voice/detect/tone_detector.cpp
    voice/echo/bulk_delay.cpp
    voice/echo/echo_canceller.cpp
    voice/echo/fullband_canceller.cpp
    voice/echo/prototype_window.cpp
    voice/echo/subband_canceller.cpp
    voice/level/level_control.cpp
    voice/noise/denoiser.cpp
    voice/pitch/pitch_tracker.cpp
    voice/pitch/speech_analysis.cpp)
add_library(vspsc::vspsvoice ALIAS vspsvoice)
target_link_libraries(vspsvoice PUBLIC vspscy8 PRIVATE $<BUILD_INTERFACE:vspsc_options>)
set_target_properties(vspsvoice PROPERTIES VSPSC_COUNTED "${VSPSC_COVERAGE}")
target_include_directories(vspsvoice PRIVATE ${PROJECT_SOURCE_DIR}/voice)
target_compile_options(
    vspsvoice PRIVATE ${vspsc_optimisation} -march=x86-64-v2 -ffp-contract=off -fno-math-errno
                      -fno-exceptions -fno-rtti -fno-asynchronous-unwind-tables -fvisibility=hidden -fcf-protection=full)
# It finds libvspscy8 beside itself.
set_target_properties(vspsvoice PROPERTIES VERSION 1 SOVERSION 1 INSTALL_RPATH "$ORIGIN" BUILD_RPATH_USE_ORIGIN ON LINK_DEPENDS ${vspsvoice_exports})
target_link_options(vspsvoice PRIVATE -Wl,--version-script=${vspsvoice_exports} -Wl,-z,relro,-z,now -Wl,-z,noexecstack)
if(NOT VSPSC_SANITIZE AND NOT VSPSC_COVERAGE)
    target_link_options(vspsvoice PRIVATE -nostartfiles -nodefaultlibs -Wl,-z,defs)
    target_link_libraries(vspsvoice PRIVATE m c)
endif()

if(VSPSC_STATIC)
    add_library(vspsvoice_static STATIC $<TARGET_OBJECTS:vspsvoice>)
    add_library(vspsc::vspsvoice_static ALIAS vspsvoice_static)
    target_link_libraries(vspsvoice_static PUBLIC vspscy8_static PRIVATE $<BUILD_INTERFACE:vspsc_options>)
    set_target_properties(vspsvoice_static PROPERTIES OUTPUT_NAME vspsvoice LINKER_LANGUAGE CXX
                                                      ARCHIVE_OUTPUT_DIRECTORY ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})
endif()

vspsc_expect_all_listed(${PROJECT_SOURCE_DIR}/voice/*.cpp)
