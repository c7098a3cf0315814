#pragma once

#include <QApplication>

#include "tests/support/Environment.h"

namespace kovra {

// The toolkit on a screen in memory, for tests of widgets.
class QtRig {
    struct WithoutScreen : Environment {
        WithoutScreen() { set("QT_QPA_PLATFORM", "offscreen"); }
    } environment_;
    int count_ = 1;
    char name_[5] = "test";
    char* arguments_[2] = {name_, nullptr};
    QApplication application_{count_, arguments_};
};

}  // namespace kovra
