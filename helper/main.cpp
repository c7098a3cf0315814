#include <csignal>
#include <exception>

#include "helper/Log.h"
#include "helper/Loop.h"

int main() {
    using namespace kovra::helper;
    try {
        Loop loop;
        const auto terminate = loop.onSignal(SIGTERM, [&] { loop.stop(); });
        const auto interrupt = loop.onSignal(SIGINT, [&] { loop.stop(); });
        loop.run();
        return 0;
    } catch (const std::exception& error) {
        log(Severity::error, error.what());
        return 1;
    }
}
