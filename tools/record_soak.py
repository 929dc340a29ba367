#!/usr/bin/env python3
"""Records with the real programs until something breaks: record/stop cycles in one run, runs killed at random moments, a card that
is full, a card that is out, an interrupted run. Every file that is left must play.

    tools/record_soak.py --bin build/release/bin --cycles 200 --kills 50 [--seed N]

Ends with status 1 when anything is not as it should be. The short form of this is one of the tests."""
import argparse
import json
import os
import pathlib
import random
import re
import resource
import shutil
import signal
import subprocess
import sys
import tempfile
import threading

SERVICE = "한빛 시험"
BROADCAST = {
    "seconds": 12,
    "ensembles": [{
        "block": "12B", "id": "0xE1C1", "label": {"text": "SOAK"},
        "services": [{
            "kind": "television", "id": "0xE1C10101", "subChannel": 1, "bitRate": 544,
            "label": {"text": SERVICE, "coding": "korean"},
            "video": {"scene": "city", "station": "SOAK"}, "sound": {"melody": "canon"},
        }],
    }],
}
# A recording begins at a random access point, once a second; two that begin in one second would share a name.
RECORD_MS, PAUSE_MS = 1400, 300
# Longer than any first picture of this broadcast.
HOLDS_A_PICTURE = 60000

faults = []
lock = threading.Lock()
counts = {"passed": 0}


def check(good, what):
    with lock:
        if good:
            counts["passed"] += 1
        else:
            faults.append(what)
            print("FAULT", what, flush=True)


class Soak:
    def __init__(self, programs, folder):
        self.programs = pathlib.Path(programs).resolve()
        self.folder = folder

    def program(self, name, *arguments):
        return [str(self.programs / name), *map(str, arguments)]

    def make_broadcast(self):
        description = self.folder / "soak.json"
        description.write_text(json.dumps(BROADCAST, ensure_ascii=False))
        self.air = self.folder / "air"
        self.air.mkdir()
        subprocess.run(self.program("dmbhead", "make", description, "--out", self.air), check=True, stdout=subprocess.DEVNULL)
        subprocess.run(self.program("dmbtv", "scan", self.air, *self.device("first")), check=True,
                       stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)

    def device(self, name):
        """A device of its own, with the channel list of the first."""
        home = self.folder / name
        for part in ("profile", "root", "card"):
            (home / part).mkdir(parents=True, exist_ok=True)
        channels = self.folder / "first/profile/DMBChannel.lst"
        if channels.exists() and name != "first":
            shutil.copy(channels, home / "profile")
        return ["--profile", home / "profile", "--device-root", home / "root", "--card", home / "card"]

    def recordings(self, name):
        folder = self.folder / name / "card/DMB"
        return sorted(folder.iterdir()) if folder.is_dir() else []

    def pictures_of(self, file):
        """How many pictures a recording gives; None when it does not play."""
        if file.stat().st_size == 0:
            return 0
        # Several at a time: each needs files of its own.
        with tempfile.TemporaryDirectory(dir=self.folder) as scratch:
            done = subprocess.run(self.program("dmbprobe", "play", file, "--audio", f"{scratch}/a.wav", "--video",
                                               f"{scratch}/v.yuv"), capture_output=True, text=True)
            said = re.search(r"\((\d+) damaged.*?(\d+) gaps\).*?; (\d+) pictures", done.stdout + done.stderr)
            if done.returncode != 0 or not said or said.group(1) != "0" or said.group(2) != "0":
                return None
            return int(said.group(3))

    def check_plays(self, file, least=HOLDS_A_PICTURE):
        size = file.stat().st_size
        pictures = self.pictures_of(file)
        check(pictures is not None and (pictures > 0 or size < least), f"{file.name} of {size} bytes does not play")
        return pictures or 0

    def check_viewer_plays(self, file):
        done = subprocess.run(self.program("dmbtv", "play", file, *self.device("player"), "--log-level", "error"),
                              capture_output=True, text=True)
        check(done.returncode == 0, f"play {file.name}: {done.returncode} {done.stderr.strip()}")

    def record_command(self, name, seconds, *more):
        return self.program("dmbtv", "record", self.air, *self.device(name), "--service", SERVICE, "--seconds", seconds,
                            "--log-level", "error", *more)

    def cycles(self, count):
        """One run of the viewer that begins and ends so many recordings by the record key."""
        lines = ["pick 0 0", "wait 4000", "expect mode 4"]
        for _ in range(count):
            lines += ["key 193", f"wait {RECORD_MS}", "expect mode 8", "key 193", f"wait {PAUSE_MS}", "expect mode 4"]
        script = self.folder / "cycles.script"
        script.write_text("\n".join(lines + ["quit"]) + "\n")
        done = subprocess.run(self.program("dmbtv", self.air, *self.device("cycles"), "--headless", "--script", script,
                                           "--log-level", "error"), capture_output=True, text=True)
        check(done.returncode == 0, f"the run of cycles ended with {done.returncode}: {done.stderr.strip()}")
        files = self.recordings("cycles")
        check(len(files) == count, f"{count} cycles left {len(files)} files")
        pictures = [self.check_plays(file, least=0) for file in files]
        print(f"{count} cycles: {len(files)} files, {sum(pictures)} pictures, least {min(pictures, default=0)}", flush=True)

    def wait_for_bytes(self, child, name):
        """The first bytes of the recording are on the card; False when the run ends before."""
        for _ in range(600):
            if any(file.stat().st_size > 0 for file in self.recordings(name)):
                return True
            try:
                child.wait(timeout=0.05)
                return False
            except subprocess.TimeoutExpired:
                pass
        return False

    def kill_once(self, number, chance):
        name = f"kill{number}"
        child = subprocess.Popen(self.record_command(name, 60), stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        if not self.wait_for_bytes(child, name):
            child.kill()
            child.wait()
            check(False, f"run {number} recorded nothing")
            return 0
        moment = chance.uniform(0, 4)
        try:
            child.wait(timeout=moment)
            check(False, f"run {number} ended by itself")
        except subprocess.TimeoutExpired:
            pass
        child.kill()
        child.wait()
        files = self.recordings(name)
        check(len(files) == 1, f"run {number} left {len(files)} files")
        # The settings and the list are whole too.
        listed = subprocess.run(self.program("dmbtv", "list", *self.device(name)), capture_output=True, text=True)
        check(listed.returncode == 0 and SERVICE in listed.stdout, f"after run {number} the list is gone")
        return sum(self.check_plays(file) for file in files)

    def kills(self, count, chance):
        pictures = [self.kill_once(number, chance) for number in range(count)]
        print(f"{count} kills: {sum(pictures)} pictures, least {min(pictures, default=0)}", flush=True)

    def card_full(self):
        """A card that takes so many bytes and no more."""
        limit = 150000

        def limited():
            signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
            resource.setrlimit(resource.RLIMIT_FSIZE, (limit, limit))

        done = subprocess.run(self.record_command("full", 30), capture_output=True, text=True, preexec_fn=limited)
        check(done.returncode == 8 and "space" in done.stderr, f"a full card: {done.returncode} {done.stderr.strip()}")
        for file in self.recordings("full"):
            size = file.stat().st_size
            check(size == limit, f"a full card keeps {size} of {limit} bytes")
            check((self.pictures_of(file) or 0) > 0, "the recording of a full card does not play")

    def card_out(self):
        """In the place of the card there is nothing to write to."""
        arguments = self.record_command("out", 5)
        card = self.folder / "out/card"
        card.rmdir()
        card.write_text("")
        done = subprocess.run(arguments, capture_output=True, text=True)
        check(done.returncode == 1 and "cannot write" in done.stderr, f"no card: {done.returncode} {done.stderr.strip()}")

    def no_folder(self):
        """Where the folder of recordings should be there is a file."""
        arguments = self.record_command("nofolder", 5)
        (self.folder / "nofolder/card/DMB").write_text("")
        done = subprocess.run(arguments, capture_output=True, text=True)
        check(done.returncode == 8, f"no folder: {done.returncode} {done.stderr.strip()}")

    def read_only(self):
        """A card that can only be read, with its folder and with an old recording."""
        arguments = self.record_command("readonly", 5)
        card = self.folder / "readonly/card"
        (card / "DMB").mkdir()
        (card / "DMB/old.dmb").write_bytes(b"old")
        script = f'mount --bind "{card}" "{card}" && mount -o remount,ro,bind "{card}" && exec "$@"'
        apart = ["unshare", "--map-root-user", "--mount", "sh", "-c", script, "sh"]
        if subprocess.run([*apart, "true"], capture_output=True).returncode != 0:
            print("NOT RUN a read-only card: this machine lets nobody mount")
            return
        done = subprocess.run([*apart, *arguments], capture_output=True, text=True)
        check(done.returncode == 1 and "cannot write" in done.stderr,
              f"a read-only card: {done.returncode} {done.stderr.strip()}")
        check([file.name for file in self.recordings("readonly")] == ["old.dmb"] and
              (card / "DMB/old.dmb").read_bytes() == b"old", "a read-only card has changed")

    def mounted(self, name, script):
        """Runs a shell script, in which "$@" records to $card, where nobody else sees its mounts; None where that is not allowed."""
        arguments = self.record_command(name, 60 if "filler" in script else 6)
        home = self.folder / name
        (home / "keep").mkdir()
        script = f'card="{home}/card"; keep="{home}/keep"\n' + script
        apart = ["unshare", "--map-root-user", "--mount", "sh", "-c"]
        if subprocess.run([*apart, f'mount -t tmpfs none "{home}/keep"'], capture_output=True).returncode != 0:
            print(f"NOT RUN {name}: this machine lets nobody mount")
            return None
        return subprocess.run([*apart, script, "sh", *arguments], capture_output=True, text=True, timeout=120)

    def small_card(self):
        """A file system that somebody else fills up while it is recorded to."""
        done = self.mounted("small", """
            mount -t tmpfs -o size=60m none "$card"
            "$@" & pid=$!
            while kill -0 $pid && ! find "$card" -name '*.dmb' -size +100k | grep -q .; do sleep 0.05; done
            head -c 100000000 /dev/zero >"$card/filler"
            wait $pid; status=$?
            cp "$card"/DMB/* "$keep"
            exit $status""")
        if done is None:
            return
        check(done.returncode == 8 and "not enough space" in done.stderr, f"a small card: {done.returncode} {done.stderr.strip()}")
        files = list((self.folder / "small/keep").iterdir())
        check(len(files) == 1 and files[0].stat().st_size > 100000, f"a small card keeps {files}")
        for file in files:
            check((self.pictures_of(file) or 0) > 0, "the recording of a small card does not play")

    def unmounted(self):
        """The card's file system is taken away while it is recorded to, and comes back."""
        done = self.mounted("unmounted", """
            mount --bind "$keep" "$card"
            "$@" & pid=$!
            while kill -0 $pid && ! find "$card" -name '*.dmb' -size +100k | grep -q .; do sleep 0.05; done
            umount --lazy "$card"
            wait $pid""")
        if done is None:
            return
        check(done.returncode == 1 and "no recording" in done.stderr,
              f"a card that was unmounted: {done.returncode} {done.stderr.strip()}")
        check(not self.recordings("unmounted"), "something was recorded beside the card")
        files = list((self.folder / "unmounted/keep/DMB").iterdir())
        check(len(files) == 1, f"a card that was unmounted keeps {files}")
        for file in files:
            self.check_plays(file, least=0)

    def interrupted(self):
        child = subprocess.Popen(self.record_command("interrupted", 60), stdout=subprocess.DEVNULL,
                                 stderr=subprocess.DEVNULL)
        begun = self.wait_for_bytes(child, "interrupted")
        check(begun, "the run to be interrupted recorded nothing")
        try:
            child.wait(timeout=1)
        except subprocess.TimeoutExpired:
            pass
        child.send_signal(signal.SIGTERM)
        check(child.wait(timeout=60) == 130, f"an interrupted run ended with {child.returncode}")
        for file in self.recordings("interrupted"):
            self.check_plays(file)

    def commands(self):
        """record --out, list and play, each with its exit status."""
        out = self.folder / "out file.dmb"
        done = subprocess.run(self.record_command("out-file", 4, "--out", out), capture_output=True, text=True)
        check(done.returncode == 0 and done.stdout.strip() == str(out), f"record --out: {done.returncode} {done.stderr}")
        check(not self.recordings("out-file"), "record --out leaves a copy on the card")
        if out.exists():
            self.check_plays(out, least=0)
            self.check_viewer_plays(out)
            # From anywhere in it, and without its end: no packet boundary is needed.
            bytes_of_it, chance = out.read_bytes(), random.Random(7)
            for number in range(2):
                cut = self.folder / f"cut{number}.dmb"
                cut.write_bytes(bytes_of_it[chance.randrange(1, len(bytes_of_it) // 4):-chance.randrange(1, 188)])
                self.check_viewer_plays(cut)
        outer = pathlib.Path(os.environ.get("DMB_TEST_DATA") or "/nonexistent") / "dmb-ts"
        for foreign in ("aac_annexb.dmb", "bsac_annexb.dmb"):
            if (outer / foreign).exists():
                self.check_viewer_plays(outer / foreign)
            else:
                print(f"NOT RUN dmb-ts/{foreign}")
        told = subprocess.run(self.program("dmbtv", "list", "--json", *self.device("cycles")), capture_output=True, text=True)
        document = json.loads(told.stdout)
        check([c["label"] for c in document["channels"]] == [SERVICE] and
              len(document["recordings"]) == len(self.recordings("cycles")), f"list --json: {told.stdout}")
        # A cycle is 1.4 s; the file begins and ends with the picture, and a busy machine stretches it.
        check(all(r["seconds"] is not None and r["seconds"] <= 4 for r in document["recordings"]),
              f"list --json: playing times {[r['seconds'] for r in document['recordings']]}")
        printed = subprocess.run(self.program("dmbtv", "list", *self.device("cycles")), capture_output=True, text=True).stdout
        check(printed.count(" 0:0") == len(document["recordings"]) and " MB" not in printed, f"list: {printed}")
        for arguments, status in [
            (("play", self.folder / "nothing.dmb"), 3),
            (("play", self.folder / "soak.json"), 3),
            (("record", self.air, "--service", "nobody", "--seconds", "2", *self.device("cycles")), 5),
            (("record", self.air, "--service", SERVICE, "--seconds", "0"), 2),
            (("record", self.air), 2),
            (("record", self.folder / "nowhere", "--service", SERVICE, "--seconds", "2"), 3),
        ]:
            done = subprocess.run(self.program("dmbtv", *arguments), capture_output=True, text=True)
            check(done.returncode == status, f"{arguments}: {done.returncode} instead of {status}: {done.stderr.strip()}")
        noise = self.folder / "noise.dmb"
        noise.write_bytes(random.Random(1).randbytes(100000))
        done = subprocess.run(self.program("dmbtv", "play", noise, *self.device("player")), capture_output=True, text=True)
        check(done.returncode == 1 and "no picture" in done.stderr, f"play of noise: {done.returncode} {done.stderr.strip()}")


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n", 1)[0])
    parser.add_argument("--bin", required=True, help="folder of the programs")
    parser.add_argument("--cycles", type=int, default=200)
    parser.add_argument("--kills", type=int, default=50)
    parser.add_argument("--seed", type=int, default=1)
    options = parser.parse_args()
    with tempfile.TemporaryDirectory(prefix="dmbview-soak-") as folder:
        soak = Soak(options.bin, pathlib.Path(folder))
        soak.make_broadcast()
        # The cycles wait most of the time; the rest goes on beside them.
        cycles = threading.Thread(target=soak.cycles, args=(options.cycles,))
        cycles.start()
        soak.kills(options.kills, random.Random(options.seed))
        soak.card_full()
        soak.card_out()
        soak.no_folder()
        soak.read_only()
        soak.small_card()
        soak.unmounted()
        soak.interrupted()
        cycles.join()
        soak.commands()
    print(f"ROOM SUMMARY: {counts['passed']} passed, {len(faults)} failed, 0 not run")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
