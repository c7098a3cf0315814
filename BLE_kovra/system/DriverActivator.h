#pragma once

namespace kovra {

class FileSystem;
class ProcessRunner;
class SystemLog;

// The virtual device by which the trackpad is muted: an extension of the system, from an outside party, that the user
// has to allow. Nothing is remembered between two calls.
class DriverActivator {
  public:
    static constexpr const char* extensionID = "org.pqrs.Karabiner-DriverKit-VirtualHIDDevice";
    static constexpr const char* listingTool = "/usr/bin/systemextensionsctl";
    static constexpr const char* managerPath =
        "/Applications/.Karabiner-VirtualHIDDevice-Manager.app/Contents/MacOS/Karabiner-VirtualHIDDevice-Manager";

    DriverActivator(ProcessRunner& processes, const FileSystem& files, SystemLog& log)
        : processes_(processes), files_(files), log_(log) {}

    // Runs the listing tool and waits for it. True if one line of its output contains the extension's identifier,
    // "activated" and "enabled". False if the tool fails or its output is not UTF-8.
    bool isExtensionActive() const;

    // Starts the extension's own manager, which asks the system to activate it; the system asks the user. What comes of
    // it is not waited for. A manager that is missing or does not start is one line in the log.
    void activate(bool force) const;

  private:
    ProcessRunner& processes_;
    const FileSystem& files_;
    SystemLog& log_;
};

}  // namespace kovra
