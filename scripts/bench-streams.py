#!/usr/bin/env python3
"""Measures our receiver beside an independent one, on the same streams over loopback, and prints a table.

usage: bench-streams.py BUILD [--quick]      BUILD: the folder of the preset linux-release

Run it in a network of its own (scripts/own-world): it starts cameras at 127.0.0.1.
"""

import json
import pathlib
import subprocess
import sys
import time

GOAL_CPU = 0.5           # of the peer's, in the same run
ROUNDS = 3               # odd; receivers take turns, so that a machine that is slow for a while is so for all
RATE_STEP = 1.25         # from one rate to the next, while looking for the highest one without loss
PAUSE = 0.5              # seconds: a camera that has just been ended, or is about to listen
HD = {"width": 1920, "height": 1080}
FULL_SPEED = 100000      # Mbit/s: far more than a processor can send
USUAL_SPEED = 1000       # Mbit/s: what most cameras have
RUNS = "--send-runs"
RING, SOCKET, PEER = "ours", "ours from a socket", "aravis"
WITHOUT_RING = ("setpriv", "--bounding-set=-net_raw")
SMALL_FPS = 1000         # the most that the simulated camera does
FAKE = {"width": 2048, "height": 2048}  # the largest picture of the independent camera

HOW_RECEIVED = """
from a ring:   ours takes packets from memory that it shares with the system, which needs the right CAP_NET_RAW.
from a socket: the same without that right.
sends runs:    packets that are due at the same moment go to the system in one call. Ours gets them as from a network
               card that collects, up to 64 KB in one piece; for Aravis, which does not ask for that, the system takes
               the same stream apart while it is sent.
single sends:  one call for each packet, so nobody gets more than one in a piece. arv-fake-gv-camera sends so, too."""


class Camera:
    """A camera in a process of its own, ended with its block."""

    def __init__(self, command):
        self.command = [str(part) for part in command]

    def __enter__(self):
        self.process = subprocess.Popen(self.command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        time.sleep(PAUSE)
        return self

    def __exit__(self, *_):
        self.process.terminate()
        try:
            self.process.wait(10)
        except subprocess.TimeoutExpired:
            self.process.kill()
            self.process.wait()
        time.sleep(PAUSE)


class Bench:
    def __init__(self, build, quick):
        self.build = pathlib.Path(build)
        self.quick = quick
        self.rows = []

    def simulator(self, size, fps, *options, link_mbits=FULL_SPEED):
        return Camera([self.build / "bin/vxsim", "--width", size["width"], "--height", size["height"], "--fps", fps,
                       "--link-speed", link_mbits, *options])

    def fake(self):
        return Camera(["arv-fake-gv-camera-0.8", "-i", "127.0.0.1"])

    def receive(self, who, **order):
        """What the measuring program says. Who is "ours", "ours from a socket" or "aravis"."""
        run = subprocess.run([*(WITHOUT_RING if who == SOCKET else ()),
                              str(self.build / "bench-streams/StreamMeasurement"), "aravis" if who == PEER else "ours",
                              *(f"{name}={value}" for name, value in order.items())],
                             capture_output=True, text=True, timeout=300, check=False)
        if run.returncode != 0 or not run.stdout:
            raise RuntimeError(f"{who} {order}: {run.stderr.strip()}")
        result = json.loads(run.stdout)
        result["counts"] = run.stderr.strip()
        print(f"  {who} {order}: {run.stdout.strip()} | {result['counts']}", file=sys.stderr)
        return result

    def each(self, camera, receivers=(RING, PEER), **order):
        results = {}
        for who in receivers:
            with camera():
                results[who] = self.receive(who, **order)
        return results

    def add(self, work, ours, peer, judged=""):
        self.rows.append((work, ours, peer, judged))

    def cpu(self):
        frames = 50 if self.quick else 150
        hd, fake = {**HD, "fps": 100}, {**FAKE, "fps": 25}
        cases = [("simulated camera, single sends", lambda: self.simulator(HD, 100), hd, (RING, SOCKET, PEER)),
                 ("arv-fake-gv-camera", self.fake, fake, (RING, SOCKET, PEER)),
                 ("simulated camera, sends runs", lambda: self.simulator(HD, 100, RUNS), hd, (RING, SOCKET, PEER))]
        for name, camera, order, receivers in cases:
            for packet in (1500, 9000):
                rounds = [self.each(camera, receivers, packet=packet, frames=frames, **order) for _ in range(ROUNDS)]
                results = {who: middle_of([each[who] for each in rounds]) for who in receivers}
                peer = results.pop(PEER)
                for result in results.values():
                    way = "ring" if "PacketRingUsed true" in result["counts"] else "socket"
                    self.add_cpu(f"{name}, {packet} bytes, from a {way}", result, peer)

    def add_cpu(self, title, ours, peer):
        def per_gigabyte(seconds):
            return [result[seconds] / (max(result["bytes"], 1) / 1e9) for result in (ours, peer)]

        receiver, machine = per_gigabyte("cpu_s"), per_gigabyte("machine_s")
        ratio = receiver[0] / receiver[1]
        verdict = "met" if ratio <= GOAL_CPU else "missed"
        self.add(f"CPU s/GB of the receiver: {title}", *(f"{each:.3f}" for each in receiver),
                 f"{ratio:.2f} (goal {GOAL_CPU}: {verdict})")
        self.add(f"CPU s/GB of the machine:  {title}", *(f"{each:.3f}" for each in machine),
                 f"{machine[0] / machine[1]:.2f}")
        self.add(f"frames complete:          {title}", share_of(ours), share_of(peer))

    def highest_rate(self):
        cameras = [("simulated camera, sends runs", lambda fps: self.simulator(HD, fps, RUNS), HD, 25.0),
                   ("simulated camera, single sends", lambda fps: self.simulator(HD, fps), HD, 25.0),
                   ("arv-fake-gv-camera", lambda fps: self.fake(), FAKE, 10.0)]
        for name, camera, size, slowest in cameras:
            for packet in (1500, 9000):
                rates = {who: self.highest_rate_of(who, camera, packet, size, slowest) for who in ("ours", "aravis")}
                self.add(f"highest rate without loss, MB/s: {name}, packets of {packet} bytes",
                         f"{rates['ours']:.0f}", f"{rates['aravis']:.0f}",
                         f"{rates['ours'] / max(rates['aravis'], 1):.2f}")

    def highest_rate_of(self, who, camera, packet, size, slowest):
        """Goes on until a frame is lost, or the camera is not faster any more."""
        best, fps = 0, slowest
        while fps < 1000:
            with camera(round(fps, 1)):
                result = self.receive(who, packet=packet, frames=int(max(fps, 30)), fps=round(fps, 1), **size)
            rate = result["bytes"] / result["seconds"] / 1e6
            if result["complete"] < result["frames"] or rate <= best * 1.05:
                break
            best = rate
            fps *= RATE_STEP
        return best

    def losses(self):
        size = {"width": 1280, "height": 720}
        fps = 50
        frames = 100 if self.quick else 1000
        usual = {}
        with self.simulator(size, fps, link_mbits=USUAL_SPEED):
            usual["ours"] = self.receive("ours", packet=1500, frames=frames, fps=fps, **size)
        with self.simulator(size, fps, link_mbits=USUAL_SPEED):
            usual["aravis"] = self.receive("aravis", packet=1500, frames=frames, fps=fps, **size)
        for memory in ((), ("--resend-memory", 40)):
            for drop in (0.001, 0.01, 0.05):
                results = self.each(lambda m=memory, d=drop: self.simulator(
                    size, fps, "--drop", d, *m, link_mbits=USUAL_SPEED), packet=1500, frames=frames, fps=fps, **size)
                title = f"{drop:.1%} lost" + (", camera keeps packets for 40 ms" if memory else "")
                goal = 1.0 if drop <= 0.01 else 0.999
                share = results["ours"]["complete"] / results["ours"]["frames"]
                self.add(f"frames complete: {title}", share_of(results["ours"]), share_of(results["aravis"]),
                         f"goal {goal:.1%}: {'met' if share >= goal else 'missed'}")
                added = {who: [a - b for a, b in zip(results[who]["latency_ms"], usual[who]["latency_ms"])]
                         for who in results}
                self.add(f"added latency, median / 99 %, ms: {title}",
                         *(f"{added[who][0]:.1f} / {added[who][1]:.1f}" for who in ("ours", "aravis")))

    def memory(self):
        """Small pictures, so that many come soon."""
        frames = 10_000 if self.quick else 100_000
        size = {"width": 128, "height": 96}
        results = self.each(lambda: self.simulator(size, SMALL_FPS), packet=1500, frames=frames, fps=SMALL_FPS, **size)
        held = {}
        for who, result in results.items():
            early, late = result["memory_kib"]
            held[who] = f"{late - early:+d} of {early}"
        self.add(f"resident memory from frame {frames // 10} to {frames}, KiB", held["ours"], held["aravis"])
        self.add(f"frames complete of these {frames}", share_of(results["ours"]), share_of(results["aravis"]))

    def delivery(self):
        run = subprocess.run([str(self.build / "bench-streams/DeliveryLatency")], capture_output=True, text=True,
                             timeout=120, check=True)
        result = json.loads(run.stdout)
        print(f"  delivery: {run.stdout.strip()}", file=sys.stderr)
        arrived = f"{result['frames']} of {result['of']} frames"
        self.add(f"from the last packet sent to the consumer, us: median, {arrived}", f"{result['median_us']:.0f}", "-")
        self.add("from the last packet sent to the consumer, us: 99.9 %", f"{result['p999_us']:.0f}", "-")


def middle_of(results):
    """The run that took the median of processor time for a byte."""
    return sorted(results, key=lambda each: each["cpu_s"] / max(each["bytes"], 1))[len(results) // 2]


def share_of(result):
    return f"{result['complete'] / max(result['frames'], 1):.2%}"


def print_table(rows):
    rows = [("stream over loopback", "ours", "Aravis", "ours / Aravis"), *rows]
    widths = [max(len(row[i]) for row in rows) for i in range(4)]
    for number, row in enumerate(rows):
        print("  ".join([f"{row[0]:<{widths[0]}}", *(f"{cell:>{width}}" for cell, width in zip(row[1:], widths[1:]))]))
        if number == 0:
            print("  ".join("-" * width for width in widths))


def main():
    if len(sys.argv) < 2:
        print(__doc__, file=sys.stderr)
        return 2
    bench = Bench(sys.argv[1], "--quick" in sys.argv)
    failed = 0
    for part in (bench.cpu, bench.highest_rate, bench.losses, bench.memory, bench.delivery):
        try:
            part()
        except (RuntimeError, OSError, ValueError, subprocess.SubprocessError) as error:
            print(f"error: {error}", file=sys.stderr)
            failed = 1
    print_table(bench.rows)
    print(HOW_RECEIVED)
    return failed


if __name__ == "__main__":
    sys.exit(main())
