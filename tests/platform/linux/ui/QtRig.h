#pragma once

#include <QApplication>

#include "tests/support/Environment.h"

namespace kovra {

// The toolkit without a screen, for a test that needs widgets.
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
