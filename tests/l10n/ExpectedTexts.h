#pragma once

#include <string>
#include <vector>

#include "BLE_kovra/l10n/L10n.h"

namespace kovra {

struct ExpectedText {
    std::string key;
    std::string text;
};

struct ExpectedTexts {
    L10n::Lang lang;
    std::vector<ExpectedText> texts;
};

// The texts that the user should see: 26 texts in each of six languages. This table is independent of the program's
// table, so that a mistake in one of them is detected. Change a text in both places.
const std::vector<ExpectedTexts>& expectedTexts();
// The texts of the second catalogue, which the Linux desktop shows instead or in addition.
const std::vector<ExpectedTexts>& expectedLinuxTexts();

}  // namespace kovra
