"""The guest program of the bare machine, PID 1: runs the host's task, and then switches the machine off."""

import os
import sys

import driver
import in_machine


def main():
    in_machine.refuse_elsewhere(first_process=True)
    os.environ.update(PATH="/usr/sbin:/usr/bin:/sbin:/bin", LANG="C.UTF-8")
    in_machine.mount("tmpfs", "/run")
    in_machine.mount("tmpfs", "/Library")
    in_machine.mount("tracefs", "/sys/kernel/tracing")
    driver.put_active()
    in_machine.serve(play)


def play(line, task):
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


main()
