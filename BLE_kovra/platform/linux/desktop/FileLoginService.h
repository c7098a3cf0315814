#pragma once

#include "BLE_kovra/platform/LoginService.h"
#include "BLE_kovra/platform/linux/desktop/ProgramSearch.h"

namespace kovra {

// A login service whose status depends on files.
class FileLoginService : public LoginService {
  public:
    // Calls `visitor` with the path of each file on which the status depends, whether it exists or not, before reading
    // that file.
    virtual LoginStatus read(const PathVisitor& visitor) const = 0;

    LoginStatus status() const override {
        return read([](const std::string&) {});
    }
};

}  // namespace kovra
