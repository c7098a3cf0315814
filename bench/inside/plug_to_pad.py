"""Plugs and unplugs the chosen mouse on the virtual laptop, and measures when the touchpad is muted and unmuted.

The packages are installed and the helper runs under its unit. A minimal listener receives the same events and writes
the attribute of an external touchpad, which the helper leaves alone. All times are the kernel's own: when the mouse is
added or removed, and when a touchpad's `inhibited` attribute is written. The reports are in seconds.

Afterwards it measures the memory of the helper beside that of `sleep`, in MiB, where other services use the same
libraries.
"""

import subprocess

import processes
import uhid
from laptop import GRACE, Laptop, helper_process


def play(host, task):
    laptop = Laptop(host, task["packages"])
    laptop.prepare()
    laptop.start()
    touchpad = laptop.plug_pad().inputs[0]
    external = laptop.plug_pad("External Touchpad", bus=uhid.BUS_USB).inputs[0]
    laptop.settle()
    listener = subprocess.Popen([task["floor"], f"/sys/class/input/{external.number}/inhibited"],
                                stdin=subprocess.DEVNULL)
    for _ in range(task["plugs"]):
        laptop.events.forget()
        mouse = laptop.plug_mouse()
        dead, floor_dead = (laptop.inhibitions.wait(pad, True, mouse.added) for pad in (touchpad, external))
        # Wait until all other receivers of the plug event are idle.
        laptop.settle()
        mouse.unplug()
        back, floor_back = (laptop.inhibitions.wait(pad, False, mouse.removed) for pad in (touchpad, external))
        host.report("plugged", dead={"ours": dead - mouse.added, "floor": floor_dead - mouse.added},
                    back={"ours": back - mouse.removed - GRACE, "floor": floor_back - mouse.removed})
    listener.kill()
    listener.wait()
    sleep = subprocess.Popen(["sleep", "infinity"], stdin=subprocess.DEVNULL)
    laptop.settle()
    host.report("memory", ours=processes.memory([helper_process()]), sleep=processes.memory([sleep.pid]))
    sleep.kill()
    sleep.wait()
