#include "engine/judge/judgement_text.h"

#include "engine/files/text_file.h"

#include <cmath>

namespace brisel {

namespace {

std::string plain(const char *format, int digits, double value) {
  const std::string text = formatf(format, digits, value);
  return text.front() == '-' && text.find_first_of("123456789") == text.npos ? text.substr(1) : text;
}

// In the unit that is shown.
double shown(const Goal &goal, double value) {
  return goal.in_percent ? 100 * value : value;
}

std::string unit_text(const Goal &goal, const std::string &number) {
  if (goal.in_percent) return " %";
  if (goal.quantity == Quantity::delay_ripple) return number == "1" ? " sample" : " samples";
  return is_in_decibels(goal.quantity) ? " dB" : "";
}

// Decibels with a fixed number of decimals, all else with significant digits.
std::string number_text(Quantity quantity, double value, int more_digits) {
  switch (quantity) {
  case Quantity::ripple:
    return plain("%.*f", 4 + more_digits, value);
  case Quantity::attenuation:
  case Quantity::gain:
    return plain("%.*f", 2 + more_digits, value);
  case Quantity::error:
  case Quantity::relative_error:
    return plain("%.*g", 3 + more_digits, value);
  case Quantity::delay_ripple:
    return plain("%.*g", 4 + more_digits, value);
  }
  return "";
}

} // namespace

std::string decibel_text(double value, int digits) {
  return plain("%.*f dB", digits, value);
}

std::string goal_text(const Goal &goal) {
  const bool gap = goal.band.starts_with("gap"), numbered = goal.band.starts_with("band");
  switch (goal.quantity) {
  case Quantity::gain:
    return "largest gain in between";
  case Quantity::delay_ripple:
    return "delay ripple";
  case Quantity::error:
  case Quantity::relative_error:
    if (gap) return "largest error from the curve";
    return numbered ? goal.band + ", " + std::string(quantity_row(goal.quantity).name) : "error";
  case Quantity::ripple:
  case Quantity::attenuation:
    break;
  }
  if (goal.band == "passbands") return "ripple of both passbands";
  return goal.band + " " + std::string(quantity_row(goal.quantity).name);
}

std::string asked_text(const Goal &goal) {
  if (!goal.asked) return "";
  const std::string number = formatf("%g", shown(goal, *goal.asked));
  return number + unit_text(goal, number);
}

std::string figure_text(const Judgement &judgement, const Figure &figure, const std::string &where) {
  const Goal &goal = judgement.goal;
  if (figure.trouble != Trouble::none) return trouble_text(figure, where);
  if (std::isinf(figure.value)) return "infinite";
  const auto text = [&](double value, int more_digits) {
    return number_text(goal.quantity, shown(goal, value), more_digits);
  };
  int more = 0;
  if (judgement.met == false && &figure == &judgement.delivered())
    while (more < 8 && figure.value != *goal.asked && text(figure.value, more) == text(*goal.asked, more)) more++;
  const std::string number = text(figure.value, more);
  return number + unit_text(goal, number);
}

std::string trouble_text(const Figure &figure, const std::string &where) {
  switch (figure.trouble) {
  case Trouble::pole_on_circle:
    return "a pole on the unit circle";
  case Trouble::pole_on_axis:
    return "a pole on the imaginary axis";
  case Trouble::unstable:
    return "unstable: a pole outside the unit circle";
  case Trouble::zero:
    return "infinite: a zero at " + where;
  case Trouble::gain_at_zero:
    return "infinite: a gain at 0, where none is asked for";
  case Trouble::no_gain:
    return "no gain at all";
  case Trouble::no_number:
    return "no number";
  case Trouble::none:
    break;
  }
  return "";
}

std::string gain_trouble_text(const Figure &figure) {
  return figure.trouble == Trouble::zero ? "0 (a zero)" : "infinite (" + trouble_text(figure, "") + ")";
}

} // namespace brisel
