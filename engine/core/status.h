// status.h - the result codes of readers, writers and generators.
#pragma once

namespace brisel {

enum [[nodiscard]] Status : int{
    success = 0,
    cannot_open = 1,  // a file cannot be opened
    format_error = 2, // a file is not what it should be
    form_not_supported = 166,
    cannot_create = 208,
    not_finite = 912, // a number that must not be written
};

} // namespace brisel
