#pragma once

#include "BLE_kovra/platform/Workspace.h"
#include "BLE_kovra/platform/posix/ReleasedPrograms.h"

namespace kovra {

// The desktop by way of xdg-open, which knows each desktop's own means. Where it is missing nothing opens.
class XdgWorkspace : public Workspace {
  public:
    explicit XdgWorkspace(DescriptorLoop& loop) : started_(loop) {}

    void open(const std::string& url) override;

  private:
    ReleasedPrograms started_;
};

}  // namespace kovra
