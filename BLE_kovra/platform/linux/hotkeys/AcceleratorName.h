#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace kovra {

// GNOME describes a combination by a word and an accelerator as GTK writes it: "Press <Control><Alt>t".
// Returns the name of the combination for users, "Ctrl+Alt+T", or nullopt if the text contains no accelerator.
std::optional<std::string> acceleratorName(std::string_view description);

}  // namespace kovra
