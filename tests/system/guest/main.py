"""The machine's first process: makes the guest a place to live in, does the host's task, switches the machine off."""

import os
import sys
import traceback

import driver
import host
import in_machine


def main():
    in_machine.refuse_elsewhere(first_process=True)
    os.environ.update(PATH="/usr/sbin:/usr/bin:/sbin:/bin", LANG="C.UTF-8")
    in_machine.mount("tmpfs", "/run")
    in_machine.mount("tmpfs", "/Library")
    in_machine.mount("tracefs", "/sys/kernel/tracing")
    driver.put_active()
    line = host.Host()
    try:
        task = line.ready()
        if task["kind"] == "demo":
            import demo
            demo.play(line, task)
        elif task["kind"] == "bench":
            sys.path.append(task["folder"])
            import virtual_machine
            virtual_machine.play(line, task)
        else:
            import scenarios
            scenarios.run(line, task)
    except BaseException:
        line.report("broken", text=traceback.format_exc())
    line.report("end")
    in_machine.switch_off()


main()
