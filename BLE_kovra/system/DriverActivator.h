#pragma once

namespace kovra {

class FileSystem;
class ProcessRunner;
class SystemLog;

// The driver of the virtual device through which the trackpad is muted: a third party's system extension, which the
// user has to allow. On Linux, the helper's package installs two programs of its own as `listingTool` and at
// `managerPath`.
class DriverActivator {
  public:
    static constexpr const char* extensionID = "org.pqrs.Karabiner-DriverKit-VirtualHIDDevice";
    static constexpr const char* listingTool = "/usr/bin/systemextensionsctl";
    static constexpr const char* managerPath =
        "/Applications/.Karabiner-VirtualHIDDevice-Manager.app/Contents/MacOS/Karabiner-VirtualHIDDevice-Manager";

    DriverActivator(ProcessRunner& processes, const FileSystem& files, SystemLog& log)
        : processes_(processes), files_(files), log_(log) {}

    // Runs the listing tool and waits for it. Returns true if one line of its output contains the extension's
    // identifier, "activated" and "enabled". Returns false if the tool fails or its output is not UTF-8.
    bool isExtensionActive() const;

    // Starts the extension's own manager, which requests the activation, and does not wait for it. Logs one line if the
    // manager is missing or cannot be started.
    void activate(bool force) const;

  private:
    ProcessRunner& processes_;
    const FileSystem& files_;
    SystemLog& log_;
};

}  // namespace kovra
