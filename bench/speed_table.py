#!/usr/bin/python3
"""Speed of every whole-file step against one plain read of the samples.

Builds a 60-minute 20 kHz synthetic recording (and a 10-minute and a 2-hour
one for memory) with `vess synth`, as bench/detect_memory.sh does, then in
one run, the steps interleaved round by round (A B C ... A B C ...) after one
warm-up round:
  - whole processes of vess, each timed by the kernel's accounting of that
    child (user + system CPU, wall, peak RSS), the ratio to `vess info --scan`
    taken round by round and its median given;
  - numpy's sum over a memory map of the same samples, timed inside Python,
    against the scan inside vess (`vess info --scan` less `vess info`);
  - the filter benchmarks of vess_bench (the design's sections alone over as
    many samples, the per-sample floor; causal and zero-phase filtering of
    the channel), repetitions interleaved at random by Google Benchmark;
  - Next window in the main window (vess_first_paint_bench, one screen an
    iteration) against the command line's threshold detection of the 2-hour
    file divided by its screens.
A new installation is simulated by an empty HOME. The machine is shared:
quote the ratios, which pair runs made moments apart, over the times.

With --before OTHER_VESS the whole-process steps of that build are run in the
same rounds, each beside this build's, and given in a table of their own with
the change of each step (after / before, paired round by round).

Usage: /usr/bin/python3 bench/speed_table.py [--build build] [--vess PATH]
       [--before PATH] [--rounds 5] [--keep DIR]   (numpy 1.24 of /usr/bin/python3)
"""
import argparse
import json
import os
import statistics
import subprocess
import sys
import tempfile
import time

FILTER = ["--kind", "elliptic", "--order", "8", "--cutoff", "1000", "--ripple", "0.1", "--attenuation", "60"]
NUMPY_SUM = """
import sys, time, numpy as np
path, points = sys.argv[1], int(sys.argv[2])
offset = __import__('os').path.getsize(path) - 2 * points
c0, w0 = time.process_time(), time.perf_counter()
total = int(np.memmap(path, dtype='<i2', mode='r', offset=offset, shape=(points,)).sum(dtype=np.int64))
print(time.process_time() - c0, time.perf_counter() - w0, total)
"""


def run(cmd, env):
    """Runs cmd with its output discarded; its own CPU, wall and peak RSS."""
    devnull = os.open(os.devnull, os.O_WRONLY)
    start = time.perf_counter()
    pid = os.posix_spawn(cmd[0], cmd, env, file_actions=[(os.POSIX_SPAWN_DUP2, devnull, 1),
                                                          (os.POSIX_SPAWN_DUP2, devnull, 2)])
    _, status, usage = os.wait4(pid, 0)
    wall = time.perf_counter() - start
    os.close(devnull)
    if os.waitstatus_to_exitcode(status) != 0:
        sys.exit(f"failed ({status}): {' '.join(cmd)}")
    return {"user": usage.ru_utime, "sys": usage.ru_stime, "cpu": usage.ru_utime + usage.ru_stime,
            "wall": wall, "rss_kb": usage.ru_maxrss}


def synthesise(vess, path, minutes, env):
    run([vess, "synth", path, "--seconds", str(minutes * 60), "--rate", "20000", "--seed", "5"], env)


def google_bench(binary, pattern, rounds, env):
    """Median CPU time (s) of each benchmark matching pattern, repetitions interleaved."""
    out = subprocess.run([binary, f"--benchmark_filter={pattern}", f"--benchmark_repetitions={rounds}",
                          "--benchmark_enable_random_interleaving=true", "--benchmark_format=json"],
                         env=env, check=True, capture_output=True, text=True).stdout
    times = {}
    for b in json.loads(out)["benchmarks"]:
        if b.get("run_type") == "iteration":
            scale = {"ns": 1e-9, "us": 1e-6, "ms": 1e-3, "s": 1.0}[b["time_unit"]]
            times.setdefault(b["run_name"], []).append(b["cpu_time"] * scale)
    return {name: statistics.median(v) for name, v in times.items()}


def main():
    here = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
    ap = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    ap.add_argument("--build", default=os.path.join(here, "build"))
    ap.add_argument("--vess", help="vess to time (default BUILD/vess)")
    ap.add_argument("--before", help="an earlier vess whose whole-process steps run beside")
    ap.add_argument("--rounds", type=int, default=5)
    ap.add_argument("--keep", help="folder for the recordings, kept for later runs")
    a = ap.parse_args()
    vess = a.vess or os.path.join(a.build, "vess")
    work = tempfile.mkdtemp(prefix="vess-speed-")
    data = a.keep or work
    os.makedirs(os.path.join(work, "home"))
    env = dict(os.environ, HOME=os.path.join(work, "home"), XDG_CONFIG_HOME="")
    files = {m: os.path.join(data, f"synthetic-{m}min.abf") for m in (10, 60, 120)}
    for minutes, path in files.items():
        if not os.path.exists(path):
            synthesise(vess, path, minutes, env)
    fixed = os.path.join(work, "fixed.ini")  # saved settings: no suggestion
    with open(fixed, "w") as f:
        f.write("[Analysis]\nDetectionMethod=threshold\nSuggestFromRecording=0\n")
    out = os.path.join(work, "out")

    def steps(path, vess=vess):
        detect = [vess, "detect", path, "--quiet", "--out", out + ".EVT"]
        return {
            "open (vess info)": [vess, "info", path],
            "scan (vess info --scan)": [vess, "info", path, "--scan"],
            "threshold detection": detect + ["--settings", fixed, "--method", "threshold"],
            "deconvolution detection": detect + ["--settings", fixed, "--method", "deconvolution"],
            "template detection": detect + ["--settings", fixed, "--method", "template"],
            "default run (suggestion + deconvolution)": detect,
            "causal filter (elliptic, 8 poles)": [vess, "filter", path] + FILTER + ["--out", out + ".abf"],
            "zero-phase filter": [vess, "filter", path] + FILTER + ["--zero-phase", "--out", out + ".abf"],
        }

    builds = {"after": vess}
    if a.before:
        builds = {"before": a.before, "after": vess}
    hour = {b: steps(files[60], v) for b, v in builds.items()}
    long_threshold = steps(files[120])["threshold detection"]
    points = 60 * 60 * 20000
    numpy_cmd = ["/usr/bin/python3", "-c", NUMPY_SUM, files[60], str(points)]
    runs = {b: {name: [] for name in hour[b]} for b in builds}
    long_runs = []
    numpy = []
    for r in range(a.rounds + 1):
        for name in hour["after"]:
            for b in builds:
                t = run(hour[b][name], env)
                if r: runs[b][name].append(t)
        t = run(long_threshold, env)
        if r: long_runs.append(t)
        got = subprocess.run(numpy_cmd, check=True, capture_output=True, text=True).stdout.split()
        if r: numpy.append({"cpu": float(got[0]), "wall": float(got[1])})
        print(f"round {r}{' (warm-up)' if r == 0 else ''} done", file=sys.stderr)

    med = lambda xs: statistics.median(xs)
    print(f"60-minute 20 kHz recording ({points:,} samples), {a.rounds} rounds, medians; "
          "CPU = user + system")
    for b in builds:
        scan = runs[b]["scan (vess info --scan)"]
        print(f"\n{b}: {builds[b]}")
        print(f"{'step':44} {'CPU s':>7} {'user':>6} {'sys':>6} {'wall s':>7} {'CPU/scan':>9} {'wall/scan':>9}"
              + (" after/before CPU" if b == "after" and a.before else ""))
        for name, ts in runs[b].items():
            ratio = med([t["cpu"] / s["cpu"] for t, s in zip(ts, scan)])
            wratio = med([t["wall"] / s["wall"] for t, s in zip(ts, scan)])
            change = ""
            if b == "after" and a.before:
                change = f" {med([t['cpu'] / u['cpu'] for t, u in zip(ts, runs['before'][name])]):16.2f}"
            print(f"{name:44} {med([t['cpu'] for t in ts]):7.3f} {med([t['user'] for t in ts]):6.3f} "
                  f"{med([t['sys'] for t in ts]):6.3f} {med([t['wall'] for t in ts]):7.3f} {ratio:9.2f} "
                  f"{wratio:9.2f}{change}")
    scan = runs["after"]["scan (vess info --scan)"]

    # The scan inside the process: vess info --scan less vess info, round by round.
    inside = [s["cpu"] - o["cpu"] for s, o in zip(scan, runs["after"]["open (vess info)"])]
    npcpu = [n["cpu"] for n in numpy]
    print(f"\nscan inside vess {med(inside):.4f} s CPU; numpy memory-mapped sum {med(npcpu):.4f} s CPU "
          f"({med([n['wall'] for n in numpy]):.4f} s wall); scan / numpy "
          f"{med([i / n for i, n in zip(inside, npcpu)]):.2f} (target at most 2)")

    bench = google_bench(os.path.join(a.build, "bench", "vess_bench"), "BM_SectionsAlone|BM_FilterChannel",
                         a.rounds, env)
    floor, causal, zero = (bench.get(k) for k in ("BM_SectionsAlone/iterations:2",
                                                  "BM_FilterChannel/0/iterations:2",
                                                  "BM_FilterChannel/1/iterations:2"))
    if floor and causal and zero:
        print(f"filter in process (vess_bench, CPU): sections alone {floor:.3f} s, causal {causal:.3f} s, "
              f"zero-phase {zero:.3f} s; causal / floor {causal / floor:.2f} (target at most 1.3), "
              f"zero-phase / causal {zero / causal:.2f} (target at most 2.5)")
        whole = med([t["cpu"] for t in runs["after"]["causal filter (elliptic, 8 poles)"]])
        print(f"  whole vess filter process (reading, rounding, writing 144 MB) / floor {whole / floor:.2f}")

    ui = os.path.join(a.build, "bench", "vess_first_paint_bench")
    if os.path.exists(ui):
        gui = google_bench(ui, "BM_NextWindow", a.rounds, dict(env, VESS_LONG_ABF=files[120],
                                                                QT_QPA_PLATFORM="offscreen"))
        screens = 2 * points // 1024
        per_cli = med([t["cpu"] for t in long_runs]) / screens
        print(f"command line {per_cli * 1e6:.2f} us CPU a screen (threshold, 2 hours / {screens:,} screens)")
        for name, per_gui in gui.items():
            stored = name.split("/")[1]  # events in the table before the timing
            print(f"next window in the GUI, {stored} events stored first: {per_gui * 1e6:.1f} us CPU a screen; "
                  f"GUI / command line {per_gui / per_cli:.1f} (target at most 2)")

    print("\npeak RSS (KB), one run each: 10 minutes, 2 hours, 2 hours / 10 minutes")
    for name in [n for n in hour["after"] if n != "open (vess info)"]:
        short, long = run(steps(files[10])[name], env), run(steps(files[120])[name], env)
        print(f"{name:44} {short['rss_kb']:8} {long['rss_kb']:8} {long['rss_kb'] / short['rss_kb']:6.2f}")
    subprocess.run(["rm", "-rf", work], check=True)


if __name__ == "__main__":
    main()
