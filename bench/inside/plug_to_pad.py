"""Inside the virtual laptop: plugs and unplugs the chosen mouse again and again and reports when the touchpad followed.

The packages are installed and the helper runs under its unit. All moments are the kernel's own: of the mouse's coming
and going, and of each write of the touchpad's attribute. Reported are seconds.
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
