"""Plugs and unplugs the chosen mouse on the virtual laptop, and measures when the touchpad is muted and unmuted.

The packages are installed and the helper runs under its unit. All times are the kernel's own: when the mouse is added
or removed, and when the touchpad's `inhibited` attribute is written. The reports are in seconds.
"""

from laptop import GRACE, Laptop


def play(host, task):
    laptop = Laptop(host, task["packages"])
    laptop.prepare()
    laptop.start()
    touchpad = laptop.plug_pad().inputs[0]
    for _ in range(task["plugs"]):
        laptop.events.forget()
        mouse = laptop.plug_mouse()
        dead = laptop.inhibitions.wait(touchpad, True, mouse.added)
        # Wait until all other receivers of the plug event are idle.
        laptop.settle()
        mouse.unplug()
        back = laptop.inhibitions.wait(touchpad, False, mouse.removed)
        host.report("plugged", dead=dead - mouse.added, back=back - mouse.removed - GRACE)
