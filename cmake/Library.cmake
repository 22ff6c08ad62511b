# The shared library libvspscy8.so.6.1: each source once per instruction-set level, tables and dispatcher once.

set(vspsc_level_sources
    src/alc/alc.cpp
    src/amrwb/adaptive_codebook_decode.cpp
    src/amrwb/adaptive_codebook_gain.cpp
    src/amrwb/adaptive_codebook_search.cpp
    src/amrwb/adaptive_vector.cpp
    src/amrwb/algebraic_codebook_decode.cpp
    src/amrwb/algebraic_codebook_search.cpp
    src/amrwb/band_filters.cpp
    src/amrwb/comfort_noise_decode.cpp
    src/amrwb/delay_encode.cpp
    src/amrwb/dtx.cpp
    src/amrwb/emphasis.cpp
    src/amrwb/excitation.cpp
    src/amrwb/excitation_enhancement.cpp
    src/amrwb/excitation_scale.cpp
    src/amrwb/filtered_excitation.cpp
    src/amrwb/four_track_search.cpp
    src/amrwb/gain_decode.cpp
    src/amrwb/gain_quant.cpp
    src/amrwb/high_band.cpp
    src/amrwb/high_pass.cpp
    src/amrwb/impulse_response.cpp
    src/amrwb/isf.cpp
    src/amrwb/isf_decode.cpp
    src/amrwb/isf_quant.cpp
    src/amrwb/isp.cpp
    src/amrwb/lp_analysis.cpp
    src/amrwb/lp_filters.cpp
    src/amrwb/open_loop_pitch.cpp
    src/amrwb/phase_dispersion.cpp
    src/amrwb/pitch_gain_clip.cpp
    src/amrwb/pitch_sharpen.cpp
    src/amrwb/pulse_search.cpp
    src/amrwb/resampling.cpp
    src/amrwb/two_track_search.cpp
    src/amrwb/vad.cpp
    src/common/adaptive_vector.cpp
    src/common/auto_corr.cpp
    src/common/auto_scale.cpp
    src/common/convolution.cpp
    src/common/correlation.cpp
    src/common/dot_prod.cpp
    src/common/interpolate.cpp
    src/common/inv_sqrt.cpp
    src/common/lag_max.cpp
    src/common/lag_window.cpp
    src/common/norm_corr.cpp
    src/common/random_noise.cpp
    src/common/residual_filter.cpp
    src/common/scaling.cpp
    src/common/synthesis_filter.cpp
    src/ec/fir.cpp
    src/ec/fir_subband_32fc.cpp
    src/ec/fir_subband_32sc.cpp
    src/ec/fir_subband_fast_32fc.cpp
    src/ec/fir_subband_fast_32sc.cpp
    src/ec/fir_subband_update_32fc.cpp
    src/ec/fir_subband_update_32sc.cpp
    src/ec/fullband_controller.cpp
    src/ec/nlms.cpp
    src/ec/noise_filter.cpp
    src/ec/noise_setup.cpp
    src/ec/subband_controller.cpp
    src/ec/subband_process.cpp
    src/ec/subband_setup.cpp
    src/ec/subband_suppressor.cpp
    src/ec/tone_detect.cpp
    src/g722/conceal_codes.cpp
    src/g722/qmf.cpp
    src/g722/sb_adpcm_decode.cpp
    src/g722/sb_adpcm_encode.cpp
    src/g7221/categorize.cpp
    src/g7221/conceal_coefs.cpp
    src/g7221/dct.cpp
    src/g7221/frame.cpp
    src/g7221/mlt.cpp
    src/g7221/region_power.cpp
    src/g7221/vector_decode.cpp
    src/g7221/vector_quantize.cpp
    src/g723/adaptive_codebook_search.cpp
    src/g723/adaptive_vector.cpp
    src/g723/dtx.cpp
    src/g723/erasure.cpp
    src/g723/fixed_codebook_decode.cpp
    src/g723/fixed_codebook_search_acelp.cpp
    src/g723/fixed_codebook_search_mlq.cpp
    src/g723/harmonic_shaping.cpp
    src/g723/high_pass.cpp
    src/g723/lp_analysis.cpp
    src/g723/lsf.cpp
    src/g723/lsf_quant.cpp
    src/g723/noise_excitation.cpp
    src/g723/noise_gain.cpp
    src/g723/open_loop_pitch.cpp
    src/g723/pitch_post_filter.cpp
    src/g723/post_filter.cpp
    src/g723/ringing.cpp
    src/g723/taming.cpp
    src/g723/vad.cpp
    src/g723/weighting.cpp
    src/g726/decode.cpp
    src/g726/encode.cpp
    src/g726/state_setup.cpp
    src/g728/codebook.cpp
    src/g728/conceal.cpp
    src/g728/gain.cpp
    src/g728/hybrid_window.cpp
    src/g728/levinson_durbin.cpp
    src/g728/post_filter.cpp
    src/g728/post_filter_adapter.cpp
    src/g728/synthesis_filter.cpp
    src/g728/weighting_filter.cpp
    src/g729/adaptive_codebook_gain.cpp
    src/g729/adaptive_codebook_search.cpp
    src/g729/adaptive_vector.cpp
    src/g729/backward_lp.cpp
    src/g729/cng_decode.cpp
    src/g729/comfort_noise.cpp
    src/g729/delay_index.cpp
    src/g729/dtx.cpp
    src/g729/fixed_codebook_32f.cpp
    src/g729/fixed_codebook_decode.cpp
    src/g729/fixed_codebook_search.cpp
    src/g729/fixed_codebook_search_a.cpp
    src/g729/fixed_codebook_search_d.cpp
    src/g729/fixed_codebook_search_e.cpp
    src/g729/gain_decode.cpp
    src/g729/gain_quant.cpp
    src/g729/gain_quant_32f.cpp
    src/g729/high_pass.cpp
    src/g729/hybrid_window.cpp
    src/g729/interpol_3.cpp
    src/g729/long_term_post_filter.cpp
    src/g729/lp_32f.cpp
    src/g729/lp_analysis.cpp
    src/g729/lpc_mode.cpp
    src/g729/lsf_decode.cpp
    src/g729/lsp.cpp
    src/g729/lsp_predictor.cpp
    src/g729/lsp_quant.cpp
    src/g729/lsp_quant_32f.cpp
    src/g729/music_detect.cpp
    src/g729/noise_lsp.cpp
    src/g729/open_loop_pitch.cpp
    src/g729/phase_dispersion.cpp
    src/g729/pitch_32f.cpp
    src/g729/pitch_track.cpp
    src/g729/post_filter.cpp
    src/g729/post_filter_32f.cpp
    src/g729/post_filter_a.cpp
    src/g729/synthesis_pair.cpp
    src/g729/taming.cpp
    src/g729/vad.cpp
    src/g729/vad_32f.cpp
    src/g729/weighted_error.cpp
    src/g729/weighting_factors.cpp
    src/g7291/state_sizes.cpp
    src/gsmamr/adaptive_codebook_gain.cpp
    src/gsmamr/adaptive_codebook_search.cpp
    src/gsmamr/adaptive_vector.cpp
    src/gsmamr/algebraic_codebook_decode.cpp
    src/gsmamr/algebraic_codebook_search.cpp
    src/gsmamr/background_noise.cpp
    src/gsmamr/code_gain_prediction.cpp
    src/gsmamr/code_gain_smoothing.cpp
    src/gsmamr/comfort_noise_decode.cpp
    src/gsmamr/delay_decode.cpp
    src/gsmamr/dtx.cpp
    src/gsmamr/excitation_control.cpp
    src/gsmamr/excitation_emphasis.cpp
    src/gsmamr/fft128.cpp
    src/gsmamr/gain_concealment.cpp
    src/gsmamr/gain_decode.cpp
    src/gsmamr/gain_quant.cpp
    src/gsmamr/gain_quant_475.cpp
    src/gsmamr/gain_quant_795.cpp
    src/gsmamr/high_pass.cpp
    src/gsmamr/lp_analysis.cpp
    src/gsmamr/lsf_decode.cpp
    src/gsmamr/lsp.cpp
    src/gsmamr/lsp_quant.cpp
    src/gsmamr/open_loop_pitch.cpp
    src/gsmamr/paired_pulse_search.cpp
    src/gsmamr/phase_dispersion.cpp
    src/gsmamr/pitch_target.cpp
    src/gsmamr/post_filter.cpp
    src/gsmamr/random_parameters.cpp
    src/gsmamr/single_pulse_search.cpp
    src/gsmamr/vad1.cpp
    src/gsmamr/vad2.cpp
    src/gsmamr/weighted_error_update.cpp
    src/gsmfr/lar.cpp
    src/gsmfr/long_term.cpp
    src/gsmfr/lpc_analysis.cpp
    src/gsmfr/pre_post_process.cpp
    src/gsmfr/rpe.cpp
    src/gsmfr/short_term_filter.cpp
    src/rta/state_sizes.cpp
    src/vector/real_fft_16s.cpp
    src/vector/real_fft_32f.cpp
    src/version/version.cpp)
set(vspsc_common_sources
    src/amrwb/filter_tables.cpp
    src/amrwb/gain_tables.cpp
    src/amrwb/isf_tables.cpp
    src/amrwb/lp_tables.cpp
    src/amrwb/phase_dispersion_tables.cpp
    src/amrwb/pitch_tables.cpp
    src/common/tables.cpp
    src/core/api.cpp
    src/ec/subband_windows.cpp
    src/ec/tables.cpp
    src/g722/tables.cpp
    src/g7221/region_power_tables.cpp
    src/g7221/transform_tables.cpp
    src/g7221/vector_code_tables.cpp
    src/g723/gain_tables.cpp
    src/g723/lp_tables.cpp
    src/g723/lsf_tables.cpp
    src/g723/pulse_tables.cpp
    src/g726/tables.cpp
    src/g728/tables.cpp
    src/g729/gain_tables.cpp
    src/g729/lp_tables.cpp
    src/g729/lsp_tables.cpp
    src/g729/silence_tables.cpp
    src/g729/tables.cpp
    src/gsmamr/gain_tables.cpp
    src/gsmamr/lp_tables.cpp
    src/gsmamr/lsf_tables.cpp
    src/gsmamr/open_loop_tables.cpp
    src/gsmamr/parameter_bits.cpp
    src/gsmamr/phase_dispersion_tables.cpp
    src/gsmamr/pitch_tables.cpp
    src/gsmamr/square_root.cpp
    src/gsmamr/tables.cpp
    src/gsmfr/tables.cpp
    src/vector/real_fft_plan.cpp
    src/version/version_records.cpp)

# -O3 because -O2 leaves small constant loops rolled. No contraction: every level gives the same floating-point bits.
# Instrumented code takes four times as long to compile with -O3.
set(vspsc_optimisation -O3)
if(VSPSC_SANITIZE)
    set(vspsc_optimisation -O1)
elseif(VSPSC_COVERAGE)
    set(vspsc_optimisation $<IF:$<BOOL:$<TARGET_PROPERTY:VSPSC_COUNTED>>,-O1,-O3>)
endif()

add_library(vspsc_library_options INTERFACE)
target_link_libraries(vspsc_library_options INTERFACE vspsc_options)
target_include_directories(vspsc_library_options INTERFACE ${PROJECT_SOURCE_DIR}/include ${PROJECT_SOURCE_DIR}/src)
target_compile_options(
    vspsc_library_options
    INTERFACE ${vspsc_optimisation} -ffp-contract=off -fno-math-errno -fno-exceptions -fno-rtti -fno-asynchronous-unwind-tables -fvisibility=hidden
              -fcf-protection=full)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # g++ 12 warns of its own AVX-512 headers. After a call whose use of registers it knows it forgets to clear their upper
    # halves, which slows down the caller's SSE code.
    target_compile_options(vspsc_library_options INTERFACE -Wno-maybe-uninitialized -Wno-uninitialized -fno-ipa-ra)
endif()

if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # g++ 12 contracts the alternating sums of complex products (vfmaddsub) whatever -ffp-contract says.
    set_source_files_properties(src/ec/fir_subband_32fc.cpp src/ec/fir_subband_fast_32fc.cpp src/ec/fir_subband_fast_32sc.cpp
                                src/ec/fir_subband_update_32fc.cpp
                                src/vector/real_fft_16s.cpp src/vector/real_fft_32f.cpp PROPERTIES COMPILE_OPTIONS "-fno-tree-vectorize")
endif()
# Selects of floating-point values are vectorised only if comparisons have no side effects.
set_source_files_properties(src/ec/noise_filter.cpp src/ec/subband_suppressor.cpp
                            PROPERTIES COMPILE_OPTIONS "-fno-trapping-math" SKIP_PRECOMPILE_HEADERS ON)
if(VSPSC_SANITIZE)
    # The butterflies are long and unrolled: with a check of every reference and scope in them they take minutes to compile.
    set_property(SOURCE src/vector/real_fft_16s.cpp src/vector/real_fft_32f.cpp APPEND
                 PROPERTY COMPILE_OPTIONS "-fno-sanitize=null,alignment;-fno-sanitize-address-use-after-scope")
    set_source_files_properties(src/ec/fir_subband_32fc.cpp src/ec/fir_subband_fast_32fc.cpp src/ec/fir_subband_fast_32sc.cpp
                                src/ec/fir_subband_update_32fc.cpp
                                src/vector/real_fft_16s.cpp src/vector/real_fft_32f.cpp PROPERTIES SKIP_PRECOMPILE_HEADERS ON) # have options of their own
endif()

function(vspsc_add_objects name)
    add_library(${name} OBJECT ${ARGN})
    set_target_properties(${name} PROPERTIES POSITION_INDEPENDENT_CODE ON)
    target_link_libraries(${name} PRIVATE vspsc_library_options)
endfunction()

vspsc_add_objects(vspsc_common ${vspsc_common_sources})
target_compile_options(vspsc_common PRIVATE -march=x86-64-v2)
foreach(level y8=x86-64-v2 v3=x86-64-v3 v4=x86-64-v4)
    string(REPLACE "=" ";" level ${level})
    list(GET level 0 tag)
    list(GET level 1 arch)
    vspsc_add_objects(vspsc_${tag} ${vspsc_level_sources})
    target_compile_definitions(vspsc_${tag} PRIVATE VSP_LEVEL=${tag})
    target_compile_options(vspsc_${tag} PRIVATE -march=${arch})
    vspsc_precompile(vspsc_${tag} "${PROJECT_SOURCE_DIR}/src/vector/simd.h")
    if(VSPSC_COVERAGE AND (VSPSC_COVERAGE STREQUAL "ON" OR tag IN_LIST VSPSC_COVERAGE))
        set_target_properties(vspsc_${tag} PROPERTIES VSPSC_COUNTED ON)
    endif()
endforeach()
set_target_properties(vspsc_common PROPERTIES VSPSC_COUNTED "${VSPSC_COVERAGE}")

# All levels without the dispatcher, for tests and benchmarks that reach a level directly.
add_library(vspsc_levels INTERFACE)
target_link_libraries(vspsc_levels INTERFACE vspsc_common vspsc_y8 vspsc_v3 vspsc_v4)
target_sources(vspsc_levels INTERFACE $<TARGET_OBJECTS:vspsc_common> $<TARGET_OBJECTS:vspsc_y8> $<TARGET_OBJECTS:vspsc_v3>
                                      $<TARGET_OBJECTS:vspsc_v4>)
target_include_directories(vspsc_levels INTERFACE ${PROJECT_SOURCE_DIR}/include ${PROJECT_SOURCE_DIR}/src)

# The names that the linker exports, from the same lists as the dispatcher, with the version that programs will ask for.
file(STRINGS src/core/exports.def export_lists REGEX "^#include")
list(TRANSFORM export_lists REPLACE "^#include \"(.+)\"$" "src/\\1")
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS src/core/exports.def ${export_lists})
set(export_map "LIBVSPSCY8_6.1 {\n    global:\n")
foreach(export_list ${export_lists})
    file(STRINGS ${export_list} exports REGEX "^VSPSC_EXPORT")
    foreach(export ${exports})
        string(REGEX REPLACE "^VSPSC_EXPORT\\([A-Za-z0-9]+, ([A-Za-z0-9_]+)\\)$" "        \\1;\n" line "${export}")
        string(APPEND export_map "${line}")
    endforeach()
endforeach()
string(APPEND export_map "    local: *;\n};\n")
file(CONFIGURE OUTPUT exports.map CONTENT "${export_map}" @ONLY)

add_library(vspscy8 SHARED src/core/dispatch.cpp)
add_library(vspsc::vspscy8 ALIAS vspscy8)
target_link_libraries(vspscy8 PRIVATE vspsc_common vspsc_y8 vspsc_v3 vspsc_v4 $<BUILD_INTERFACE:vspsc_library_options>)
target_include_directories(vspscy8 PUBLIC $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include>
                                          $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
set_target_properties(vspscy8 PROPERTIES VERSION 6.1 SOVERSION 6.1 LINK_DEPENDS ${CMAKE_CURRENT_BINARY_DIR}/exports.map)
target_compile_options(vspscy8 PRIVATE -march=x86-64-v2)
# As properties of the source, because these come last on the command line and override the sanitizer options.
set_source_files_properties(src/core/dispatch.cpp PROPERTIES COMPILE_OPTIONS "-fno-sanitize=all;-fno-stack-protector;-fno-profile-arcs;-fno-test-coverage")
target_link_options(vspscy8 PRIVATE -Wl,--version-script=${CMAKE_CURRENT_BINARY_DIR}/exports.map -Wl,-z,relro,-z,now
                    -Wl,-z,noexecstack -Wl,--no-undefined-version)
if(NOT VSPSC_SANITIZE AND NOT VSPSC_COVERAGE)
    # The start files would add a few bytes of writable data and weak symbols.
    target_link_options(vspscy8 PRIVATE -nostartfiles -nodefaultlibs -Wl,-z,defs)
    target_link_libraries(vspscy8 PRIVATE m c)
endif()

# The same objects and the same dispatcher for programs that are linked statically.
if(VSPSC_STATIC)
    add_library(vspscy8_static STATIC $<TARGET_OBJECTS:vspscy8> $<TARGET_OBJECTS:vspsc_common> $<TARGET_OBJECTS:vspsc_y8>
                                      $<TARGET_OBJECTS:vspsc_v3> $<TARGET_OBJECTS:vspsc_v4>)
    add_library(vspsc::vspscy8_static ALIAS vspscy8_static)
    target_link_libraries(vspscy8_static PRIVATE $<BUILD_INTERFACE:vspsc_library_options> INTERFACE m)
    target_include_directories(vspscy8_static PUBLIC $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include>
                                                     $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
    set_target_properties(vspscy8_static PROPERTIES OUTPUT_NAME vspscy8 LINKER_LANGUAGE CXX
                                                    ARCHIVE_OUTPUT_DIRECTORY ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})
endif()

vspsc_expect_all_listed(${PROJECT_SOURCE_DIR}/src/*.cpp)
