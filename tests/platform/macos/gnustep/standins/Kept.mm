#import "tests/platform/macos/gnustep/standins/Kept.h"

#include <map>
#include <string>
#include <utility>

namespace kovra {

namespace {

std::map<std::pair<const void*, std::string>, id> kept;

}  // namespace

void keep(id object, const char* name, id value) { kept[{(const void*)object, name}] = [value retain]; }

id keptBy(id object, const char* name) {
    const auto found = kept.find({(const void*)object, name});
    return found == kept.end() ? nil : found->second;
}

}  // namespace kovra
