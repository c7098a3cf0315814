#pragma once

#include "BLE_kovra/platform/Workspace.h"
#include "BLE_kovra/platform/posix/ReleasedPrograms.h"

namespace kovra {

// Opens URLs with xdg-open, which calls the tool of the running desktop. Has no effect if xdg-open is not installed.
class XdgWorkspace : public Workspace {
  public:
    explicit XdgWorkspace(DescriptorLoop& loop) : started_(loop) {}

    void open(const std::string& url) override;

  private:
    ReleasedPrograms started_;
};

}  // namespace kovra
