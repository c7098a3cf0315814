#pragma once

namespace kovra {

class AlertPresenter;
class Application;
class Bundle;
class FileSystem;
class HIDService;
class HotKeyService;
class Locale;
class LoginService;
class MainQueue;
class PreferencesStore;
class ProcessRunner;
class StatusBar;
class SystemLog;
class WindowHost;
class Workspace;

// All that the program asks of the system it runs on. Only the entry point, the delegate and the shared() accessors see
// the whole of it; every other class takes the two or three services that it needs.
struct Platform {
    Application& application;
    MainQueue& mainQueue;
    HIDService& hid;
    PreferencesStore& preferences;
    FileSystem& fileSystem;
    SystemLog& log;
    Locale& locale;
    StatusBar& statusBar;
    HotKeyService& hotKeys;
    LoginService& loginService;
    WindowHost& windows;
    AlertPresenter& alerts;
    ProcessRunner& processes;
    Workspace& workspace;
    Bundle& bundle;

    // The services of this process, which have to outlive it. install() comes first; without it, current() stops the
    // process.
    static void install(const Platform& platform);
    static void install(Platform&&) = delete;
    static const Platform& current();
};

}  // namespace kovra
