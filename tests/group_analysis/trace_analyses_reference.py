#!/usr/bin/env python3
"""Checks vess ap, ap-train, fepsp and peaks on traces with known answers.

Each trace is written as a CSV and run through vess; the results are held
against (a) the answers the trace was built to have, worked out from its
formula, and (b) this script's own, separate implementation of the same
definitions on the same samples: times within one sample interval, other
values within 1 %. One trace is an action potential of the Hodgkin-Huxley
(1952) squid axon model integrated with a 1 us Runge-Kutta step.

Pure Python (no numpy). Usage: trace_analyses_reference.py PATH/TO/vess [--report]
"""
import json
import math
import os
import random
import subprocess
import sys
import tempfile

DT = 0.02  # ms between samples of the built traces
failures = []
report = []


def check(what, got, want, tol):
    ok = got is not None and want is not None and abs(got - want) <= tol
    report.append(f"{what:42s} vess {fmt(got):>11s}  expected {fmt(want):>11s}  {'ok' if ok else 'FAIL'}")
    if not ok:
        failures.append(what)


def fmt(v):
    return "none" if v is None else f"{v:.4f}"


def near(what, got, want, times=False):
    """Agreement with the independent implementation."""
    if want is None or got is None:
        check(what, got, want, 0)
        return
    check(what, got, want, DT if times else max(0.01 * abs(want), 1e-9))


def run(vess, command, t, y, *args):
    with tempfile.NamedTemporaryFile("w", suffix=".csv", delete=False) as f:
        f.write("Time (ms),Value (mV)\n")
        for a, b in zip(t, y):
            f.write(f"{a:.6f},{b:.9f}\n")
        name = f.name
    try:
        out = subprocess.run([vess, command, name, "--json", *args], check=True, capture_output=True, text=True)
    finally:
        os.unlink(name)
    return json.loads(out.stdout)["rows"]


# ---------- an independent implementation of the definitions ----------

def deriv(y, dt):
    n = len(y)
    return [(y[1] - y[0]) / dt] + [(y[i + 1] - y[i - 1]) / (2 * dt) for i in range(1, n - 1)] + [(y[-1] - y[-2]) / dt]


def interp(y, x):
    i = min(int(x), len(y) - 2)
    return y[i] + (x - i) * (y[i + 1] - y[i])


def last_at_or_below_before(y, lo, hi, level):
    """Fractional index where y last rises through level in [lo, hi]."""
    j = max(k for k in range(lo, hi + 1) if y[k] <= level)
    return j + (level - y[j]) / (y[j + 1] - y[j])


def first_at_or_below_after(y, start, level):
    for j in range(start, len(y)):
        if y[j] <= level:
            return j if j == start else j - 1 + (y[j - 1] - level) / (y[j - 1] - y[j])
    return None


def area_below(y, a, b, level, pieces=50):
    """Area below level between fractional indices a and b, by fine sums."""
    total, n = 0.0, int((b - a) * pieces) + 1
    h = (b - a) / n
    for k in range(n):
        total += max(0.0, level - interp(y, a + (k + 0.5) * h)) * h
    return total * DT


def spike(y, rate=20.0):
    d = deriv(y, DT)
    peak = max(range(len(y)), key=lambda k: (y[k], -k))
    fastest = max(range(peak + 1), key=lambda k: (d[k], -k))
    i = fastest
    while i > 0 and d[i - 1] >= rate:
        i -= 1
    thr_i = i - 1 + (rate - d[i - 1]) / (d[i] - d[i - 1])
    thr = interp(y, thr_i)
    ts = int(thr_i)
    base = sum(y[:max(1, ts // 2)]) / max(1, ts // 2)
    amp = y[peak] - thr
    up = lambda f: last_at_or_below_before(y, ts, peak, thr + f * amp)
    down = lambda f: first_at_or_below_after(y, peak, thr + f * amp)
    below = first_at_or_below_after(y, peak, base)
    m = min(range(math.ceil(below), len(y)), key=lambda k: (y[k], k))
    back = next((j for j in range(m, len(y)) if y[j] >= base), None)
    end = len(y) - 1 if back is None else back - 1 + (base - y[back - 1]) / (y[back] - y[back - 1])
    fall = math.ceil(first_at_or_below_after(y, peak, thr))
    return {
        "threshold": thr, "thr_time": thr_i * DT, "peak": y[peak], "peak_time": peak * DT, "amplitude": amp,
        "baseline": base, "rise": (up(0.9) - up(0.1)) * DT, "half_width": (down(0.5) - up(0.5)) * DT,
        "width": (first_at_or_below_after(y, peak, thr + 20) - last_at_or_below_before(y, ts, peak, thr + 20)) * DT,
        "decay": (down(0.37) - down(0.9)) * DT, "max_rise": max(d[:peak + 1]), "max_decay": min(d[peak:fall + 1]),
        "ahp_peak": base - y[m], "ahp_time": m * DT, "ahp_area": area_below(y, below, end, base)}


def compare_spike(name, got, mine):
    for key, value in mine.items():
        near(f"{name}: {key} (independent)", got[key], value, times=key.endswith("time"))


# ---------- traces ----------

def built_spike():
    """Flat -65 mV, a linear foot of 2 mV/ms from 9.5 to 14.5 ms, a Gaussian
    spike of 95 mV at 15 ms (sd 0.3 ms) and an alpha-function AHP of 15 mV
    peaking at 19.2 ms."""
    A, tp, s, k, D, ta, tau = 95.0, 15.0, 0.3, 2.0, 15.0, 16.2, 3.0
    foot = lambda t: k * min(max(t - 9.5, 0.0), 5.0)
    gauss = lambda t: A * math.exp(-(t - tp) ** 2 / (2 * s * s))
    ahp = lambda t: 0.0 if t <= ta else -D * (t - ta) / tau * math.exp(1 - (t - ta) / tau)
    v = lambda t: -65 + foot(t) + gauss(t) + ahp(t)
    t = [i * DT for i in range(2000)]
    # Known answers from the formula: threshold where dV/dt = 20 on the foot.
    slope = lambda x: k + A * (tp - x) / (s * s) * math.exp(-(x - tp) ** 2 / (2 * s * s))
    lo, hi = 13.0, 14.9
    for _ in range(60):
        mid = (lo + hi) / 2
        lo, hi = (mid, hi) if slope(mid) < 20 else (lo, mid)
    thr_t = lo
    thr = v(thr_t)
    half = thr + (40 - thr) / 2   # the peak is -65 + 10 + 95
    half_width = 2 * s * math.sqrt(2 * math.log(A / (half + 55)))
    fine = [ta + 1e-3 * i for i in range(int(20.8 / 1e-3))]   # until the trace ends at 40 ms
    area = sum(max(0.0, -65 - v(x)) for x in fine) * 1e-3
    known = {"thr_time": thr_t, "threshold": thr, "peak": 40.0, "peak_time": tp, "half_width": half_width,
             "ahp_peak": 5.0, "ahp_time": ta + tau, "ahp_area": area}
    return t, [v(x) for x in t], known


def hodgkin_huxley():
    """Squid axon at 6.3 C (resting -65 mV), 1 ms pulse of 10 uA/cm2 at 5 ms,
    Runge-Kutta 4 at 1 us, sampled every 20 us for 30 ms."""
    gna, gk, gl, ena, ek, el = 120.0, 36.0, 0.3, 50.0, -77.0, -54.387
    an = lambda v: 0.01 * (v + 55) / (1 - math.exp(-(v + 55) / 10))
    bn = lambda v: 0.125 * math.exp(-(v + 65) / 80)
    am = lambda v: 0.1 * (v + 40) / (1 - math.exp(-(v + 40) / 10))
    bm = lambda v: 4 * math.exp(-(v + 65) / 18)
    ah = lambda v: 0.07 * math.exp(-(v + 65) / 20)
    bh = lambda v: 1 / (1 + math.exp(-(v + 35) / 10))

    def f(t, s):
        v, m, h, n = s
        i = 10.0 if 5.0 <= t < 6.0 else 0.0
        return (i - gna * m ** 3 * h * (v - ena) - gk * n ** 4 * (v - ek) - gl * (v - el),
                am(v) * (1 - m) - bm(v) * m, ah(v) * (1 - h) - bh(v) * h, an(v) * (1 - n) - bn(v) * n)

    v0 = -65.0
    s = (v0, am(v0) / (am(v0) + bm(v0)), ah(v0) / (ah(v0) + bh(v0)), an(v0) / (an(v0) + bn(v0)))
    h, t, out = 0.001, 0.0, []
    per = round(DT / h)
    for step in range(round(30 / h)):
        if step % per == 0:
            out.append(s[0])
        k1 = f(t, s)
        k2 = f(t + h / 2, tuple(a + h / 2 * b for a, b in zip(s, k1)))
        k3 = f(t + h / 2, tuple(a + h / 2 * b for a, b in zip(s, k2)))
        k4 = f(t + h, tuple(a + h * b for a, b in zip(s, k3)))
        s = tuple(a + h / 6 * (b + 2 * c + 2 * d + e) for a, b, c, d, e in zip(s, k1, k2, k3, k4))
        t += h
    return [i * DT for i in range(len(out))], out


def field_trace():
    """Two stimuli (5 and 30 ms): artefact, a 0.3 mV fibre volley 1.2 ms
    later, a fEPSP falling at 0.5 mV/ms for 2 ms from 2 ms after the stimulus
    and recovering at 0.2 mV/ms; the second response 1.5 times the first and
    carrying a population spike 1.8 mV below the line joining its peaks."""
    def response(x, scale, spike):
        y = 5 * math.exp(-x / 0.02) if x >= 0 else 0.0
        y -= 0.3 * math.exp(-(x - 1.2) ** 2 / (2 * 0.15 ** 2))
        if 2 <= x < 4:
            y -= scale * 0.5 * (x - 2)
        elif 4 <= x < 9:
            y -= scale * (1 - 0.2 * (x - 4))
        if spike:   # piecewise linear: +0.3 at 4.5, -1.5 at 5, +0.3 at 5.5
            pts = [(4.2, 0), (4.5, 0.3), (5.0, -1.5), (5.5, 0.3), (5.8, 0)]
            for (x0, y0), (x1, y1) in zip(pts, pts[1:]):
                if x0 <= x < x1:
                    y += y0 + (y1 - y0) * (x - x0) / (x1 - x0)
        return y
    t = [i * DT for i in range(2500)]
    return t, [response(x - 5, 1.0, False) + (response(x - 30, 1.5, True) if x >= 30 else 0.0) for x in t]


def peaks_trace():
    rng = random.Random(26)
    t = [i * DT for i in range(5000)]
    known = [(20.0, 2.0), (35.0, 3.0), (36.5, 1.5), (60.0, 4.0), (80.0, 2.5)]
    # Gaussian peaks of sd 0.4 ms in noise of sd 0.1.
    clean = [sum(amp * math.exp(-(x - when) ** 2 / (2 * 0.4 ** 2)) for when, amp in known) for x in t]
    y = [c + rng.gauss(0, 0.1) for c in clean]
    # The amplitude of a peak riding on another's tail is its height above
    # the valley between them (on the noise-free trace).
    expected, prev = [], 0
    for when, _ in known:
        p = round(when / DT)
        valley = min(clean[prev:p + 1])
        expected.append((when, clean[p] - (valley if valley > 0.5 else 0.0)))
        prev = p
    return t, y, expected


def independent_peaks(y, sds=5.0):
    quiet = max(10, int(len(y) * 0.1))
    mean = sum(y[:quiet]) / quiet
    sd = math.sqrt(sum((v - mean) ** 2 for v in y[:quiet]) / (quiet - 1))
    tall = sds * sd
    found = []
    for i in range(1, len(y) - 1):
        if y[i] > y[i - 1] and y[i] >= y[i + 1] and y[i] - mean > tall:
            j = i
            left = y[i]
            while j > 0 and y[j - 1] <= y[i]:
                j -= 1
                left = min(left, y[j])
            j = i
            right = y[i]
            while j + 1 < len(y) and y[j + 1] <= y[i]:
                j += 1
                right = min(right, y[j])
            if y[i] - max(left, right) > tall:
                found.append(i)
    out, prev = [], 0
    for p in found:
        valley = min(y[prev:p + 1])
        base = mean if valley - mean < tall else valley
        out.append((p * DT, y[p] - base))
        prev = p
    return out


def main():
    vess = sys.argv[1]
    # Action potential built from known pieces.
    t, y, known = built_spike()
    got = run(vess, "ap", t, y)[0]
    for key, want in known.items():
        tol = DT if key.endswith("time") or key == "half_width" else 0.01 * abs(want)
        check(f"built spike: {key} (known)", got[key], want, tol)
    compare_spike("built spike", got, spike(y))
    # The same trace through standard input, as `vess average ... --csv -` pipes it.
    csv = "Time (ms),Value (mV)\n" + "".join(f"{a:.6f},{b:.9f}\n" for a, b in zip(t, y))
    piped = json.loads(subprocess.run([vess, "ap", "-", "--json"], input=csv, check=True, capture_output=True,
                                      text=True).stdout)["rows"][0]
    check("built spike through stdin: threshold", piped["threshold"], got["threshold"], 0)

    # Hodgkin-Huxley action potential.
    t, y = hodgkin_huxley()
    got = run(vess, "ap", t, y)[0]
    compare_spike("Hodgkin-Huxley", got, spike(y))

    # A train: the same built spike three times, intervals 10 and 14 ms.
    _, one, _ = built_spike()
    train = [-65.0] * 400
    for gap in (500, 700, 1100):
        train += one[400:400 + gap]
    rows = run(vess, "ap-train", [i * DT for i in range(len(train))], train)
    check("train: spikes", rows[-1]["count"], 3, 0)
    check("train: first interval (ms)", rows[1]["isi"], 10.0, DT)
    check("train: second interval (ms)", rows[2]["isi"], 14.0, DT)
    check("train: adaptation index", rows[-1]["adaptation"], (14 - 10) / (14 + 10), 1e-3)
    check("train: frequency (Hz)", rows[-1]["frequency"], 2 / 24 * 1000, 0.5)

    # Field potentials.
    t, y = field_trace()
    rows = run(vess, "fepsp", t, y)
    first, second = rows
    for what, got_v, want, tol in [
            ("fEPSP 1: stimulus (ms)", first["stim_time"], 5.0, DT),
            ("fEPSP 1: volley amplitude (mV)", first["fv_amp"], 0.3, 0.003),
            ("fEPSP 1: volley latency (ms)", first["fv_latency"], 1.2, DT),
            ("fEPSP 1: slope (mV/ms)", first["fepsp_slope"], -0.5, 0.005),
            ("fEPSP 1: amplitude (mV)", first["fepsp_amp"], 1.0, 0.01),
            ("fEPSP 1: onset latency (ms)", first["onset_latency"], 2.2, DT),
            ("fEPSP 1: peak latency (ms)", first["peak_latency"], 4.0, DT),
            ("fEPSP 2: slope (mV/ms)", second["fepsp_slope"], -0.75, 0.0075),
            ("fEPSP 2: amplitude (mV)", second["fepsp_amp"], 1.5, 0.015),
            ("fEPSP 2: population spike (mV)", second["ps_amp"], 1.8, 0.018),
            ("fEPSP 2: population spike latency (ms)", second["ps_latency"], 5.0, DT),
            ("fEPSP: paired-pulse slope ratio", second["ppr_slope"], 1.5, 0.015)]:
        check(what, got_v, want, tol)
    check("fEPSP 1: no population spike", 0 if first["ps_amp"] is None else 1, 0, 0)
    chord = run(vess, "fepsp", t, y, "--chord")
    check("fEPSP 1: chord slope (mV/ms)", chord[0]["fepsp_slope"], -0.5, 0.005)

    # Peaks in noise.
    t, y, known = peaks_trace()
    rows = run(vess, "peaks", t, y)
    mine = independent_peaks(y)
    check("peaks: count", rows[-1]["count"], len(known), 0)
    for (when, amp), row, (my_t, my_a) in zip(known, rows, mine):
        # The noise (sd 0.1) moves the flat top of a peak of sd 0.4 ms by a few samples.
        check(f"peak at {when} ms: time (known)", row["time"], when, 0.1)
        check(f"peak at {when} ms: amplitude (known, 0.4 = 4 noise SD)", row["amplitude"], amp, 0.4)
        near(f"peak at {when} ms: time (independent)", row["time"], my_t, times=True)
        near(f"peak at {when} ms: amplitude (independent)", row["amplitude"], my_a)

    if "--report" in sys.argv or failures:
        print("\n".join(report))
    if failures:
        print(f"{len(failures)} checks failed", file=sys.stderr)
        sys.exit(1)


if __name__ == "__main__":
    main()
