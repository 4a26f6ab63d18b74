"""The simulated camera against programs that know nothing of ours: an independent client and a dissector.

Runs in a network of its own with nothing but loopback; needs vxsim (environment variable VX_SIMULATOR), the packages
aravis-tools and tshark, and the right to make a network namespace.
"""

import contextlib
import os
import pathlib
import re
import shutil
import signal
import socket
import subprocess
import sys
import tempfile
import time
import unittest

import vx_unittest

SIMULATOR = os.environ.get("VX_SIMULATOR", "")
STREAM_CLIENT = "arv-camera-test-0.8"
TEST_CLIENT = "arv-test-0.8"
TOOLS = ("unshare", "ip", "tshark", STREAM_CLIENT, TEST_CLIENT)
# Set in the process that is already inside its own network.
INSIDE = "VX_PEERS_INSIDE"

# Longer than anything here takes on a slow machine; who waits that long has failed.
LONGEST_S = 60

# Small enough that a frame fits into a receiver's default buffer even when that program does not run for a while; so
# fast that a second is enough of them.
SMALL = ("--width", "320", "--height", "240", "--fps", "50")

# Of the test client: what it may expect of this camera, and what it cannot judge. Its schema test compares with a
# schema of version 1.0, and this camera's description has version 1.1.
TEST_CLIENT_SETTINGS = """[Vexa:SimulatedCamera]
ChunkList=FrameID Timestamp
ChunksSupport=true
Schema=ignore
SensorSize=4096;3072
SoftwareTriggerSupport=true
"""


def enter_own_network():
    """Goes on in a network namespace with nothing but loopback; does not return unless already there."""
    if os.environ.get(INSIDE):
        return
    missing = [tool for tool in TOOLS if shutil.which(tool) is None]
    if missing:
        sys.exit(f"error: {', '.join(missing)} is missing: run scripts/setup as root")
    if not os.access(SIMULATOR, os.X_OK):
        sys.exit(f"error: VX_SIMULATOR is '{SIMULATOR}', which is no program: build the target vxsim")
    os.environ[INSIDE] = "1"
    own = ["unshare", "--net"] + ([] if os.geteuid() == 0 else ["--map-root-user"])
    os.execvp(own[0], own + ["sh", "-c", 'ip link set lo up && exec "$@"', "peers", sys.executable, "-B", *sys.argv])


def end(process):
    if process.poll() is None:
        process.terminate()
    try:
        process.wait(LONGEST_S)
    except subprocess.TimeoutExpired:
        process.kill()
        process.wait()


class Camera:
    """A running vxsim."""

    def __init__(self, *arguments):
        self._log = tempfile.TemporaryFile(mode="w+")
        self._process = subprocess.Popen([SIMULATOR, "--verbose", *arguments], stdout=subprocess.PIPE,
                                         stderr=self._log, stdin=subprocess.DEVNULL, text=True)
        self.ready = self._process.stdout.readline().rstrip("\n")

    def __enter__(self):
        return self

    def __exit__(self, *_):
        end(self._process)
        self._process.stdout.close()
        self._log.close()

    def end_with(self, number):
        """Sends a signal; returns what the camera ends with."""
        self._process.send_signal(number)
        return self._process.wait(LONGEST_S)

    def events(self):
        self._log.seek(0)
        return self._log.read()

    def wait_for(self, event):
        until = time.monotonic() + LONGEST_S
        while event not in self.events():
            if time.monotonic() > until:
                raise AssertionError(f"'{event}' did not happen; what happened: {self.events()}")
            time.sleep(0.05)


def run(*command, check=True):
    done = subprocess.run(command, capture_output=True, text=True, errors="replace", timeout=LONGEST_S,
                          stdin=subprocess.DEVNULL)
    if check and done.returncode != 0:
        raise AssertionError(f"{command[0]} ended with {done.returncode}: {done.stdout}{done.stderr}")
    return done


def stream(*arguments, seconds=1):
    """Streams with the independent client; returns what it tells, by name."""
    output = run(STREAM_CLIENT, f"--duration={seconds}", *arguments).stdout
    return {name: value for name, value in re.findall(r"^(\S.*?) += (.*)$", output, re.MULTILINE)}


class StreamingTest(unittest.TestCase):
    def assert_good(self, told, frames):
        self.assertGreaterEqual(int(told["n_completed_buffers"]), frames, told)
        for counter in ("n_failures", "n_underruns", "n_timeouts", "n_missing_frames", "n_size_mismatch_errors",
                        "n_missing_packets", "n_error_packets", "n_resend_ratio_reached"):
            self.assertEqual(told[counter], "0", (counter, told))

    def test_the_client_finds_the_camera_and_reads_who_it_is(self):
        with Camera(*SMALL, "--model", "Model 7", "--serial", "S-42") as camera:
            self.assertRegex(camera.ready, r"^ready 127\.0\.0\.1:3956 02:00:7F:00:00:01$")
            told = stream()
        self.assertEqual(told["vendor name"], "Vexa")
        self.assertEqual(told["model name"], "Model 7")
        self.assertEqual(told["device serial number"], "S-42")
        self.assertEqual((told["image width"], told["image height"]), ("320", "240"))
        self.assertEqual(told["payload"], "76800 bytes")

    def test_every_format_arrives_without_error(self):
        for name, bytes_per_pixel in (("Mono8", 1), ("BayerGR8", 1), ("BayerRG8", 1), ("BayerGB8", 1),
                                      ("BayerBG8", 1), ("RGB8", 3), ("BGR8", 3), ("YUV422_8", 2),
                                      ("YUV422_8_UYVY", 2)):
            with self.subTest(format=name), Camera("--width", "160", "--height", "120", "--format", name):
                told = stream()
                self.assertEqual(told["payload"], f"{160 * 120 * bytes_per_pixel} bytes")
                self.assert_good(told, 18)    # of 25 in a second

    def test_the_client_can_change_the_frame_rate_and_the_size(self):
        with Camera(*SMALL):
            told = stream("--frequency=100", "--width=160", "--height=120")
        self.assertEqual((told["image width"], told["image height"]), ("160", "120"))
        self.assert_good(told, 60)    # of 100 in a second

    def test_extended_ids_arrive_without_error(self):
        with Camera(*SMALL):
            self.assert_good(stream("--features", "GevGVSPExtendedIDMode=On"), 30)    # of 50 in a second

    def test_the_client_finds_the_largest_packet_size_with_test_packets(self):
        with Camera(*SMALL):
            told = stream("--packet-size-adjustment=always")
        self.assertGreater(int(told["gv packet size"].split()[0]), 60000)    # loopback carries nearly 64 KiB
        self.assert_good(told, 30)

    def test_lost_packets_are_sent_again(self):
        with Camera(*SMALL, "--drop", "0.02", "--seed", "7"):
            told = stream()
        self.assert_good(told, 30)
        self.assertGreater(int(told["n_resent_packets"]), 10, told)

    def test_disorder_does_no_harm(self):
        with Camera(*SMALL, "--reorder", "0.05", "--duplicate", "0.05", "--delay", "0.02"):
            told = stream()
        self.assert_good(told, 30)
        self.assertGreater(int(told["n_duplicated_packets"]), 0, told)

    def test_two_cameras_are_told_apart(self):
        with Camera(*SMALL), Camera(*SMALL, "--address", "127.0.0.2", "--serial", "second"):
            told = stream("--name=Vexa-SimulatedCamera-second")
        self.assertEqual(told["device serial number"], "second")
        self.assert_good(told, 30)


class ClientsOwnTest(unittest.TestCase):
    EXPECTED = ("Genicam:Load", "Properties:SensorSizeReadout", "Properties:GainReadout",
                "Properties:ExposureTimeReadout", "MultipleAcquisitionA:BufferCheck",
                "MultipleAcquisitionA:FrameRate", "SingleAcquisition:BufferCheck", "SoftwareTrigger:BufferCheck",
                "MultipleAcquisitionB:BufferCheck", "MultipleAcquisitionB:FrameRate", "Chunks:BufferCheck",
                "GigEVision:NStreamChannels", "GigEVision:StreamChannel")

    def test_every_test_of_the_client_succeeds(self):
        with tempfile.NamedTemporaryFile("w", suffix=".cfg") as settings, Camera(*SMALL):
            settings.write(TEST_CLIENT_SETTINGS)
            settings.flush()
            output = run(TEST_CLIENT, f"--configuration={settings.name}").stdout
        plain = re.sub(r"\x1b\[[0-9;]*m", "", output)
        self.assertIn("Found 1 device", plain)
        verdicts = dict(re.findall(r"^(\w+:\w+) +([A-Z]+)", plain, re.MULTILINE))
        for name in self.EXPECTED:
            self.assertIn(name, verdicts, plain)
        self.assertEqual(set(verdicts.values()), {"SUCCESS"}, plain)


class ControlTest(unittest.TestCase):
    def test_a_second_application_is_refused(self):
        with Camera(*SMALL) as camera:
            first = subprocess.Popen([STREAM_CLIENT, "--duration=20"], stdout=subprocess.DEVNULL,
                                     stderr=subprocess.DEVNULL)
            try:
                camera.wait_for("acquisition started")
                second = run(STREAM_CLIENT, "--duration=1", check=False)
                self.assertIn("access-denied", second.stdout + second.stderr)
                self.assertEqual(camera.events().count("control taken"), 1)
            finally:
                end(first)

    def test_control_of_an_application_that_died_is_free_after_the_heartbeat_timeout(self):
        with Camera(*SMALL) as camera:
            client = subprocess.Popen([STREAM_CLIENT, "--duration=30"], stdout=subprocess.DEVNULL,
                                      stderr=subprocess.DEVNULL)
            try:
                camera.wait_for("acquisition started")
            finally:
                client.kill()
                client.wait()
            camera.wait_for("acquisition stopped")
            camera.wait_for("control released or lost")
            self.assertGreater(int(stream()["n_completed_buffers"]), 0)


class TrafficTest(unittest.TestCase):
    """What the dissector says of all that went over the wire, of both directions."""

    @contextlib.contextmanager
    def capture(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        path = pathlib.Path(folder.name, "traffic.pcapng")
        dissector = subprocess.Popen(["tshark", "-i", "lo", "-B", "64", "-w", path], stdout=subprocess.DEVNULL,
                                     stderr=subprocess.PIPE, stdin=subprocess.DEVNULL, text=True)
        try:
            # It says so when it listens.
            for line in dissector.stderr:
                if "Capturing on" in line:
                    break
            until = time.monotonic() + LONGEST_S
            while not path.exists() and time.monotonic() < until:
                time.sleep(0.05)
            yield path
            self.wait_until_written(path)
        finally:
            dissector.send_signal(signal.SIGINT)
            dissector.stderr.close()
            end(dissector)

    @staticmethod
    def wait_until_written(path):
        size = -1
        while path.stat().st_size != size:
            size = path.stat().st_size
            time.sleep(0.5)    # chosen: twice as long as packets wait before they are written

    @staticmethod
    def counts(path, *filters):
        """How many packets pass each of these filters, which must not contain a comma: read once for all of them."""
        # GVSP has no port of its own: it is recognised by what the packets look like.
        table = run("tshark", "-r", path, "--enable-heuristic", "gvsp_udp", "-q",
                    "-z", ",".join(("io,stat,0", *filters))).stdout
        rows = [line.split("|")[2:-1] for line in table.splitlines() if "<>" in line and "Interval" not in line]
        if len(rows) != 1 or len(rows[0]) != 2 * len(filters):
            raise AssertionError(f"the dissector does not tell its counts: {table}")
        return [int(number) for number in rows[0][::2]]    # each is followed by its bytes

    def assert_counts(self, path, *expectations):
        """Each expectation: a filter, what its count is compared with, and how."""
        counts = self.counts(path, *(which for which, _, _ in expectations))
        for count, (which, compare, limit) in zip(counts, expectations):
            compare(count, limit, which)

    def assert_clean(self, path, streams, *more):
        self.assert_counts(
            path, ("gvcp", self.assertGreater, 100), ("gvsp", self.assertGreater, 100),
            # Leaders, trailers. The highest bit tells the width of ids.
            ("gvsp.format == 0x01 || gvsp.format == 0x81", self.assertGreater, 20),
            ("gvsp.format == 0x02 || gvsp.format == 0x82", self.assertGreater, 20),
            ("_ws.malformed", self.assertEqual, 0), ("_ws.short || _ws.unreassembled", self.assertEqual, 0),
            # Warnings and errors.
            ("_ws.expert.severity >= 0x600000", self.assertEqual, 0),
            # Of each stream the very first packet comes before there is anything to recognise it by.
            ("udp && !gvcp && !gvsp", self.assertLessEqual, streams), *more)

    def test_the_dissector_finds_what_is_malformed(self):
        with contextlib.ExitStack() as stack:
            sender, camera = (stack.enter_context(socket.socket(socket.AF_INET, socket.SOCK_DGRAM)) for _ in range(2))
            camera.bind(("127.0.0.1", 3956))
            path = stack.enter_context(self.capture())
            good = bytes.fromhex("42 01 0080 0004 0001 00000000")    # a READREG command
            longer_than_it_is = bytes.fromhex("42 01 0080 0008 0002 00000000")
            for datagram in (good, longer_than_it_is):
                sender.sendto(datagram, camera.getsockname())
        self.assertEqual(self.counts(path, "gvcp", "_ws.malformed"), [2, 1])

    def test_no_packet_is_malformed(self):
        with self.capture() as path, Camera(*SMALL):
            stream()
        self.assert_clean(path, 1)

    def test_no_packet_with_extended_ids_is_malformed(self):
        with self.capture() as path, Camera(*SMALL):
            stream("--features", "GevGVSPExtendedIDMode=On")
        self.assert_clean(path, 1, ("gvsp.blockid64", self.assertGreater, 100))

    def test_no_packet_with_chunks_is_malformed(self):
        picture_and_chunks = 320 * 240 + 8 + 16 + 16
        behind_an_image = (0x4001, "gvsp.chunkdatapayloadlengthhex", ())
        as_the_payload = (0x0004, "gvsp.payloadlength", ("--features", "GevSCCFGExtendedChunkData=false"))
        for payload_type, length, features in (behind_an_image, as_the_payload):
            of_type = f"gvsp.payloadtype == {payload_type}"
            # Leaders and trailers, then trailers.
            expected = [(of_type, self.assertGreater, 40),
                        (f"{of_type} && {length} == {picture_and_chunks}", self.assertGreater, 20)]
            if payload_type == 0x4001:
                expected.append(("gvsp.chunklayoutidhex == 7", self.assertGreater, 20))
            with self.subTest(type=payload_type):
                with self.capture() as path, Camera(*SMALL):
                    stream("--chunks=FrameID,Timestamp", *features)
                self.assert_clean(path, 1, *expected)

    def test_no_packet_that_is_sent_again_and_no_test_packet_is_malformed(self):
        with self.capture() as path, Camera(*SMALL, "--drop", "0.02"):
            stream("--packet-size-adjustment=always", "--gv-packet-size=1500")
            stream()
        asked_again, sent_again = "gvcp.cmd.command == 0x0040", "gvsp.status == 0x0100"
        self.assert_clean(path, 2, (asked_again, self.assertGreater, 0), (sent_again, self.assertGreater, 0))


class ProgramTest(unittest.TestCase):
    def fail_with(self, *arguments):
        done = run(SIMULATOR, *arguments, check=False)
        self.assertEqual(done.stdout, "")
        self.assertEqual(len(done.stderr.splitlines()), 1, done.stderr)
        return done.returncode, done.stderr

    def test_a_port_in_use_is_named_with_its_remedy(self):
        with Camera():
            code, text = self.fail_with()
        self.assertEqual(code, 2)
        self.assertIn("127.0.0.1:3956", text)
        self.assertIn("choose another address or port", text)

    def test_an_address_of_another_machine_is_refused(self):
        code, text = self.fail_with("--address", "192.0.2.1")
        self.assertEqual(code, 1)
        self.assertIn("192.0.2.1", text)

    def test_it_ends_cleanly_on_signals(self):
        for number in (signal.SIGTERM, signal.SIGINT):
            with self.subTest(signal=number), Camera() as camera:
                self.assertEqual(camera.end_with(number), 0)

    def test_it_ends_cleanly_while_it_streams(self):
        with Camera("--fps", "200") as camera:
            client = subprocess.Popen([STREAM_CLIENT, "--duration=30"], stdout=subprocess.DEVNULL,
                                      stderr=subprocess.DEVNULL)
            try:
                camera.wait_for("acquisition started")
                self.assertEqual(camera.end_with(signal.SIGTERM), 0)
            finally:
                client.kill()
                client.wait()

    def test_it_vanishes_without_a_word(self):
        with Camera(*SMALL, "--vanish-after", "10") as camera:
            client = subprocess.Popen([STREAM_CLIENT, "--duration=30"], stdout=subprocess.DEVNULL,
                                      stderr=subprocess.DEVNULL)
            try:
                camera.wait_for("vanished")
                done = run(TEST_CLIENT, check=False)
                self.assertIn("Found 0 device", done.stdout)
            finally:
                client.kill()
                client.wait()
            self.assertEqual(camera.end_with(signal.SIGTERM), 0)


if __name__ == "__main__":
    enter_own_network()
    vx_unittest.main()
