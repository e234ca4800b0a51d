// filter_name.h - names and comment texts in generated source.
#pragma once

#include <string>
#include <string_view>

namespace brisel {

/// The name of a filter from the path of its source file: the last component, at most 13 characters, cut at its first
/// point, made a valid identifier that is no keyword.
std::string filter_name(std::string_view path);

/// Text that can stand inside a block comment: "*/" is parted, control characters become blanks.
std::string comment_text(std::string_view text);

} // namespace brisel
