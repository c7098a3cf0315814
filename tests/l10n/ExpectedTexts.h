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

// What the user is to read: 26 texts in each of six languages. A table of the tests' own, so that a slip in the
// program's table has to be made twice to go unseen. Whoever changes a text changes it in both places.
const std::vector<ExpectedTexts>& expectedTexts();

}  // namespace kovra
