#!/usr/bin/env python3
"""Times `marigold sync` side by side with `rsync -a` and `cp -a` in one run, and prints ratios.

Cases:
  first copy      the small tree (100,000 files in 10,000 folders) into an empty destination
  nothing to do   the same command again on the copied tree
  big file        one 2 GiB file into an empty destination, on the work folder's file system
  big (reflink)   the same on a loop-mounted btrfs image (root only; skipped otherwise)
  scan memory     peak resident memory of a dry run over 1,000,000 items (`/usr/bin/time -v`)

Usage: run_bench.py --marigold PATH [--work DIR] [--quick] [--keep] [--drop-caches]
Run by hand; not part of the test suite. See bench/README.md.
"""
import argparse
import os
import shutil
import subprocess
import sys
import time

HERE = os.path.dirname(os.path.abspath(__file__))
GENERATOR = os.path.join(HERE, "generate_tree.py")


class Bench:
    def __init__(self, args):
        self.marigold = os.path.abspath(args.marigold)
        self.work = os.path.abspath(args.work)
        self.quick = args.quick
        self.drop_caches = args.drop_caches
        home = os.path.join(self.work, "home")
        os.makedirs(home, exist_ok=True)
        # A home of its own: the user's preferences and logs stay out of the measurements.
        self.env = dict(os.environ, HOME=home, XDG_CONFIG_HOME=os.path.join(home, ".config"),
                        XDG_DATA_HOME=os.path.join(home, ".local/share"), LC_ALL="C.UTF-8")
        self.env.pop("LANGUAGE", None)
        self.rows = []

    # --- trees -------------------------------------------------------------------------------

    def generate(self, kind, path, *extra):
        stamp = path + ".done"
        if os.path.exists(stamp):
            return path
        if os.path.lexists(path):
            remove(path)
        subprocess.run([sys.executable, GENERATOR, kind, path, *extra], check=True)
        open(stamp, "w").close()
        return path

    def small_tree(self):
        extra = ["--files", "10000", "--folders", "1000"] if self.quick else []
        return self.generate("small", os.path.join(self.work, "small" + ("-quick" if self.quick else "")), *extra)

    def big_file(self, folder):
        size = "256M" if self.quick else "2G"
        return self.generate("big", os.path.join(folder, f"big-{size}", "big.dat"), "--size", size)

    def many_tree(self):
        items = "100000" if self.quick else "1000000"
        return self.generate("many", os.path.join(self.work, f"many-{items}"), "--items", items)

    # --- the tools -----------------------------------------------------------------------------

    def commands(self, source, dest):
        """Each tool's command copying the folder `source` to the folder `dest`."""
        return {
            "marigold": [self.marigold, "sync", "--backup", source, dest],
            "rsync": ["rsync", "-a", source + "/", dest + "/"],
            "cp": ["cp", "-a", source + "/.", dest],
        }

    def timed(self, command):
        # Dirty pages of the previous step would otherwise be written back inside this timing.
        os.sync()
        if self.drop_caches:
            try:
                with open("/proc/sys/vm/drop_caches", "w") as caches:
                    caches.write("3\n")
            except OSError:
                pass
        start = time.perf_counter()
        result = subprocess.run(command, env=self.env, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE)
        elapsed = time.perf_counter() - start
        if result.returncode != 0:
            sys.exit(f"run_bench.py: {' '.join(command)} failed ({result.returncode}):\n"
                     f"{result.stderr.decode(errors='replace')}")
        return elapsed

    def copy_case(self, name, source, dest_root, rerun_name=None):
        first, again = {}, {}
        for tool, command in self.commands(source, "").items():
            dest = os.path.join(dest_root, f"dest-{tool}")
            if os.path.lexists(dest):
                remove(dest)
            os.makedirs(dest)
            command = self.commands(source, dest)[tool]
            first[tool] = self.timed(command)
            if rerun_name:
                again[tool] = self.timed(command)
            remove(dest)
        self.rows.append((name, first))
        if rerun_name:
            self.rows.append((rerun_name, again))

    # --- cases -----------------------------------------------------------------------------------

    def run_copies(self):
        small = self.small_tree()
        self.copy_case("first copy (small files)", small, self.work, "nothing to do (small files)")
        big = self.big_file(self.work)
        self.copy_case("big file, local", os.path.dirname(big), self.work)

    def run_reflink(self):
        if os.geteuid() != 0 or not shutil.which("mkfs.btrfs"):
            print("big file on a reflink file system: skipped (needs root and mkfs.btrfs)")
            return
        image = os.path.join(self.work, "reflink.img")
        mount = os.path.join(self.work, "reflink")
        size_gib = 2 if self.quick else 6
        device = None
        try:
            with open(image, "wb") as out:
                out.truncate(size_gib << 30)
            subprocess.run(["mkfs.btrfs", "-q", "-f", image], check=True)
            device = subprocess.run(["losetup", "-f", "--show", image], check=True, capture_output=True,
                                    text=True).stdout.strip()
            os.makedirs(mount, exist_ok=True)
            subprocess.run(["mount", device, mount], check=True)
            big = self.big_file(mount)
            self.copy_case("big file, reflink (btrfs)", os.path.dirname(big), mount)
        finally:
            subprocess.run(["umount", mount], check=False, stderr=subprocess.DEVNULL)
            if device:
                subprocess.run(["losetup", "-d", device], check=False)
            if os.path.exists(image):
                os.remove(image)

    def run_memory(self):
        if not os.path.exists("/usr/bin/time"):
            print("scan memory: skipped (needs /usr/bin/time)")
            return
        many = self.many_tree()
        dest = os.path.join(self.work, "many-dest")
        os.makedirs(dest, exist_ok=True)
        peaks = {
            "marigold": self.peak_rss([self.marigold, "sync", "--backup", "--dry-run", many, dest]),
            "rsync": self.peak_rss(["rsync", "-a", "--dry-run", many + "/", dest + "/"]),
        }
        self.memory = peaks

    def peak_rss(self, command):
        result = subprocess.run(["/usr/bin/time", "-v", *command], env=self.env, stdout=subprocess.DEVNULL,
                                stderr=subprocess.PIPE, text=True)
        for line in result.stderr.splitlines():
            if "Maximum resident set size" in line:
                return int(line.rsplit(":", 1)[1]) * 1024
        sys.exit(f"run_bench.py: no memory figure from {' '.join(command)}:\n{result.stderr}")

    # --- report ----------------------------------------------------------------------------------

    def report(self):
        print()
        print(f"{'case':34} {'marigold':>10} {'rsync -a':>10} {'cp -a':>10} {'÷ rsync':>9} {'÷ cp':>7}")
        for name, times in self.rows:
            m, r, c = times["marigold"], times["rsync"], times["cp"]
            print(f"{name:34} {m:9.2f}s {r:9.2f}s {c:9.2f}s {ratio(m, r):>9} {ratio(m, c):>7}")
        if getattr(self, "memory", None):
            m, r = self.memory["marigold"], self.memory["rsync"]
            print(f"{'peak memory, dry run of the scan':34} {mib(m):>10} {mib(r):>10} {'':>10} {ratio(m, r):>9}")


def ratio(a, b):
    return f"{a / b:.2f}x" if b > 0 else "-"


def mib(n):
    return f"{n / (1 << 20):.0f} MiB"


def remove(path):
    if os.path.isdir(path) and not os.path.islink(path):
        shutil.rmtree(path)
    else:
        os.remove(path)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--marigold", required=True, help="the marigold program to measure (a Release build)")
    parser.add_argument("--work", default="/var/tmp/marigold-bench", help="where trees and copies go")
    parser.add_argument("--quick", action="store_true", help="a tenth of the sizes, to try the harness out")
    parser.add_argument("--keep", action="store_true", help="keep the generated trees for the next run")
    parser.add_argument("--drop-caches", action="store_true", help="drop the page cache before each timing (root)")
    parser.add_argument("--skip", action="append", default=[], choices=["copies", "reflink", "memory"])
    args = parser.parse_args()
    for tool in ("rsync", "cp"):
        if not shutil.which(tool):
            sys.exit(f"run_bench.py: {tool} is needed for the comparison")
    os.makedirs(args.work, exist_ok=True)
    bench = Bench(args)
    try:
        if "copies" not in args.skip:
            bench.run_copies()
        if "reflink" not in args.skip:
            bench.run_reflink()
        if "memory" not in args.skip:
            bench.run_memory()
        bench.report()
    finally:
        if not args.keep:
            shutil.rmtree(args.work, ignore_errors=True)


if __name__ == "__main__":
    main()
