#include <cstddef>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

#include "BLE_kovra/system/DriverActivator.h"
#include "tests/fakes/FakeFileSystem.h"
#include "tests/fakes/FakeLog.h"
#include "tests/fakes/FakeProcesses.h"
#include "tests/fuzz/Promise.h"

// What the listing tool prints. The driver counts as active only if one line of valid UTF-8 has all three words.

namespace {

using namespace kovra;

bool isValidUtf8(std::string_view text) {
    try {
        static_cast<void>(nlohmann::json(text).dump());
        return true;
    } catch (const nlohmann::json::type_error&) {
        return false;
    }
}

bool contains(std::string_view line, std::string_view word) { return line.find(word) != std::string_view::npos; }

bool shouldBeActive(std::string_view listing) {
    bool found = false;
    fuzz::forEachLine(listing, [&](std::string_view line) {
        found |=
            contains(line, DriverActivator::extensionID) && contains(line, "activated") && contains(line, "enabled");
    });
    return found && isValidUtf8(listing);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view listing = fuzz::textOf(data, size);
    FakeProcesses processes;
    FakeFileSystem files;
    FakeLog log;
    processes.outputs[DriverActivator::listingTool] = listing;
    const DriverActivator driver(processes, files, log);
    fuzz::promise(driver.isExtensionActive() == shouldBeActive(listing), "one line has all three words");
    fuzz::promise(log.lines.empty() && processes.started.empty(), "looking starts and logs nothing");
    return 0;
}
