#pragma once

#include "BLE_kovra/platform/Locale.h"

namespace kovra {

class AlertPresenter;
class Application;
class Bundle;
class FileSystem;
class HIDService;
class HotKeyService;
class LoginService;
class MainQueue;
class PreferencesStore;
class ProcessRunner;
class StatusBar;
class SystemLog;
class WindowHost;
class Workspace;

// All services of the operating system. Only the entry point, the delegate and the shared() accessors use the whole
// struct. Every other class takes only the services that it needs.
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
    Wording wording = Wording::macOS;

    // install() sets the services of this process, and current() returns them. install() keeps a reference, so
    // `platform` and its services must outlive their users. current() aborts unless install() was called before.
    static void install(const Platform& platform);
    static void install(Platform&&) = delete;
    static const Platform& current();
};

}  // namespace kovra
