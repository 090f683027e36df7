#!/usr/bin/env python3
"""A control loop with the standard library only.

Every 100 ms it reads 20 values of the panel in one batch. It sounds the buzzer while the input at
point 1 of slot 0 is on. When the service ends, the loop continues without values and reconnects as
soon as possible.

    python3 control_loop.py 50        # 50 cycles
"""
import socket
import sys
import time

PATH = "/tmp/ovik_server.socket"
CYCLE = 0.100
DEADLINE = 0.080  # of a cycle, by which the panel must have answered
READS = (
    [f"getHWPluginIO;0;{point}" for point in range(8)]
    + [f"getHWPluginLedMode;0;{point}" for point in range(8)]
    + ["getBrightness", "getBuzzerMode", "getBacklightCounter", "getSysCounter"]
)
INPUT = 1  # the value that the buzzer follows


class Panel:
    """A connection to the service. Discard it after an error: a late answer would be taken for the
    answer to the next request."""

    def __init__(self, deadline):
        self.socket = socket.socket(socket.AF_UNIX, socket.SOCK_SEQPACKET)
        try:
            self._wait_until(deadline)
            self.socket.connect(PATH)
        except OSError:
            self.close()
            raise

    def close(self):
        self.socket.close()

    def batch(self, requests, deadline):
        """Sends all requests and returns the answers, each a status and a text. So few fit into the
        socket's buffer; with thousands, receive answers while sending."""
        for request in requests:
            self._wait_until(deadline)
            self.socket.send(request.encode() + b"\0")
        return [self._receive(deadline) for _ in requests]

    def _receive(self, deadline):
        self._wait_until(deadline)
        message = self.socket.recv(10000)
        if not message:
            raise ConnectionError("the service closed the connection")
        status, _, text = message.rstrip(b"\0").decode(errors="replace").partition(" ")
        return int(status), text

    def _wait_until(self, deadline):
        # Never 0, which would not wait at all.
        self.socket.settimeout(max(deadline - time.monotonic(), 0.001))


def cycle(panel, state, deadline):
    """Reads the values, lets the buzzer follow the input, and returns the values by index."""
    answers = panel.batch(READS, deadline)
    # A failure, such as no platform yet, leaves this one value out.
    values = {i: int(text) for i, (status, text) in enumerate(answers) if status == 0}
    mode = int(values.get(INPUT) == 1)
    if INPUT in values and mode != state.get("buzzer"):
        [(status, _)] = panel.batch([f"setBuzzerMode;{mode}"], deadline)
        if status == 0:
            state["buzzer"] = mode
    return values


def main():
    cycles = int(sys.argv[1]) if len(sys.argv) > 1 else 50
    panel, state, last, complete = None, {}, None, 0
    start = time.monotonic()
    for i in range(cycles):
        try:
            panel = panel or Panel(start + DEADLINE)
            complete += len(cycle(panel, state, start + DEADLINE)) == len(READS)
            outcome = "done"
        except (OSError, ValueError) as error:
            outcome = str(error)
            if panel:
                panel.close()
            panel, state = None, {}
        if outcome != last:
            print(f"cycle {i}: {outcome}", flush=True)
        last = outcome
        start += CYCLE
        time.sleep(max(start - time.monotonic(), 0))
    if panel:
        panel.close()
    print(f"{complete} of {cycles} cycles read all values")


main()
