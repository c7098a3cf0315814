#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "helper/Descriptor.h"
#include "tests/helper/model/Action.h"
#include "tests/helper/model/Machine.h"

namespace kovra::helper::model {

// A kind of input device, and whether the helper may mute it.
struct Shape {
    Device device;
    bool isPad;   // built in
    bool isTwin;  // of the first pad
};
const std::vector<Shape>& shapes();

// The machine with its people, its devices, and a service manager that follows the helper's unit.
class World {
  public:
    World();

    // Starts the helper again and again, as the unit says, until `machine.step` throws LifeIsOver.
    void live();
    // Returns whether the action had an effect: a write that was refused has none.
    bool perform(const Action& action);

    // The device of this shape, or null while it is unplugged.
    Device* device(int shape);
    const Device* device(int shape) const { return const_cast<World*>(this)->device(shape); }

    Machine machine;
    bool isWanted = true;  // whether the service is started
    Time startAt{0};
    bool wasReleaseKilled = false;  // the last --release
    int releases = 0;
    int grants = 0;

  private:
    void createFolder() const;
    void release();
    bool write(int user, const std::string& text);
    bool writeKept(int user, const std::string& text);
    bool keepOpen(int user);
    bool replace(int number);
    bool plug(int shape, bool isGranted);
    bool startProcess(int user, const std::string& name);
    std::optional<pid_t> application(int number) const;

    std::map<int, std::string> inputs_;  // by shape: the kernel's name
    std::map<int, Descriptor> kept_;     // by user
    int nextInput_ = 3;
    int names_ = 0;
    pid_t nextProcess_ = 1'000;
};

}  // namespace kovra::helper::model
