#pragma once

#include "BLE_kovra/platform/Workspace.h"

namespace kovra {

class AppKitWorkspace : public Workspace {
  public:
    void open(const std::string& url) override;
};

}  // namespace kovra
