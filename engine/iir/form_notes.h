// form_notes.h - what the user should know of the forms of a design, as design notes.
#pragma once

#include "engine/analysis/form_conversions.h"

#include <string_view>

namespace brisel {

/// A note for every form that keeps fewer than 9 digits or does not exist, and one for a dropped delay. A ladder, which
/// few filters have, is spoken of only when it was chosen. `prefix` begins the sentences ("After quantization "), which
/// otherwise begin with "The".
void note_forms(const FormReport &found, RealizationForm chosen, std::string_view prefix = {});

/// A note that the cascaded sections answer `delay` samples earlier than the system they were made from; none for 0.
void note_dropped_delay(int delay);

} // namespace brisel
