"""The program of kovra-scenarios.service: carries out the host's task, and then switches the machine off."""

import pathlib
import sys

sys.path.append(str(pathlib.Path(__file__).resolve().parents[1] / "guest"))

import in_machine


def main():
    in_machine.refuse_elsewhere(first_process=False)
    in_machine.mount("tracefs", "/sys/kernel/tracing")
    in_machine.serve(play)


def play(line, task):
    if task["kind"] == "bench":
        sys.path.append(task["folder"])
        import plug_to_pad
        plug_to_pad.play(line, task)
    else:
        import scenarios
        scenarios.run(line, task)


main()
