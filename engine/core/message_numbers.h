// message_numbers.h - every message number that the program can show; their texts stand in brisel.msg.
#pragma once

#include <array>

namespace brisel {

// One row a message: name and number. Up to 899 the numbers are fixed; refusals of our own start at 900.
#define BRISEL_MESSAGES(X)                                                                                             \
  X(about, 0)                                                                                                          \
  X(nothing_to_print, 162)                                                                                             \
  X(coefficient_file_refused, 164)                                                                                     \
  X(unsupported_form, 166)                                                                                             \
  X(cannot_create_file, 208)                                                                                           \
  X(no_design, 209)                                                                                                    \
  X(not_quantized, 235)                                                                                                \
  X(linear_program_memory, 275)                                                                                        \
  X(simplex_degenerate, 276)                                                                                           \
  X(simplex_unbounded, 277)                                                                                            \
  X(simplex_too_many_pivots, 278)                                                                                      \
  X(simplex_no_start_basis, 282)                                                                                       \
  X(equiripple_failed, 283)                                                                                            \
  X(needs_fir_design, 285)                                                                                             \
  X(needs_iir_design, 286)                                                                                             \
  X(exchange_failed, 403)                                                                                              \
  X(equiripple_memory, 406)                                                                                            \
  X(specification_refused, 407)                                                                                        \
  X(system_file_refused, 408)                                                                                          \
  X(matlab_needs_design, 417)                                                                                          \
  X(extremal_set_degenerate, 425)                                                                                      \
  X(needs_iir_for_quantization, 556)                                                                                   \
  X(impossible_specification, 900)                                                                                     \
  X(method_not_available, 901)                                                                                         \
  X(length_out_of_limits, 902)                                                                                         \
  X(order_out_of_limits, 903)                                                                                          \
  X(compensation_null, 904)                                                                                            \
  X(phase_equalizer_refused, 905)                                                                                      \
  X(iir_compensation_refused, 906)                                                                                     \
  X(minimum_phase_refused, 907)                                                                                        \
  X(group_delay_refused, 908)                                                                                          \
  X(write_failed, 909)                                                                                                 \
  X(cannot_read_file, 910)                                                                                             \
  X(setting_out_of_limits, 911)                                                                                        \
  X(result_not_finite, 912)                                                                                            \
  X(temporary_file_in_the_way, 913)                                                                                    \
  X(fir_compensation_refused, 914)                                                                                     \
  X(least_squares_keeps_nothing, 925)                                                                                  \
  X(linear_program_inaccurate, 926)                                                                                    \
  X(quantized_to_zero, 950)                                                                                            \
  X(form_does_not_exist, 951)                                                                                          \
  X(scaling_impossible, 952)                                                                                           \
  X(quantized_unstable, 953)                                                                                           \
  X(partial_fractions_lost, 940)                                                                                       \
  X(poles_on_unit_circle, 941)                                                                                         \
  X(realization_lost, 942)                                                                                             \
  X(system_has_no_form, 956)                                                                                           \
  X(unknown_kind_of_file, 960)                                                                                         \
  X(command_not_available, 970)                                                                                        \
  X(dsp_word_misfit, 971)                                                                                              \
  X(bad_base_name, 972)                                                                                                \
  X(prewarp_impossible, 980)                                                                                           \
  X(no_coefficient_words, 985)                                                                                         \
  X(coefficient_word_misfit, 986)                                                                                      \
  X(file_loses_filter, 988)

enum class Message : int {
#define BRISEL_ENUM(name, number) name = number,
  BRISEL_MESSAGES(BRISEL_ENUM)
#undef BRISEL_ENUM
};

inline constexpr std::array all_messages{
#define BRISEL_VALUE(name, number) Message::name,
    BRISEL_MESSAGES(BRISEL_VALUE)
#undef BRISEL_VALUE
};

} // namespace brisel
