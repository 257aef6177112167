#!/usr/bin/python3
"""Independent reference values for hrv_measures_test.cpp, computed with
numpy and scipy from the same RR series the test builds.

The series: 1000 RR intervals, the first beat at 0 ms, interval k starting at
t seconds (the time of its first beat):
    RR = 700 + 25 sin(2 pi 0.25 t) + 15 sin(2 pi 0.08 t + 0.3) + 10 sin(2 pi 0.02 t)
         + 20 (u - 0.5)
with u = (x - 1) / (2^31 - 2) from the minimal-standard generator
x <- 48271 x mod (2^31 - 1), seeded with 12345 (std::minstd_rand), and two
artefacts: interval 101 (index 100) set to 1400 ms and interval 501 (index
500) to 250 ms. Options: keep 300 <= RR <= 900 ms, segments of 60000 points
of 1000 us (60 s) cut from 0 ms, an interval in the segment of the beat that
ends it, the recording as long as the last beat; nNN threshold 20 ms.
"""
import numpy as np
from scipy.interpolate import CubicSpline
from scipy.signal import welch, detrend

M = 2**31 - 1
x = 12345
rr = []
t = 0.0
for k in range(1000):
    x = (48271 * x) % M
    u = (x - 1) / (M - 1)
    ts = t / 1000
    v = (700 + 25 * np.sin(2 * np.pi * 0.25 * ts) + 15 * np.sin(2 * np.pi * 0.08 * ts + 0.3)
         + 10 * np.sin(2 * np.pi * 0.02 * ts) + 20 * (u - 0.5))
    if k == 100: v = 1400.0
    if k == 500: v = 250.0
    rr.append(v)
    t += v
rr = np.array(rr)
beats = np.concatenate([[0.0], np.cumsum(rr)])
end = beats[1:]
kept = (rr <= 900) & (rr >= 300)
k_rr = rr[kept]
pairs = [(rr[i], rr[i + 1]) for i in range(len(rr) - 1) if kept[i] and kept[i + 1]]
d = np.array([b - a for a, b in pairs])
out = {}
out['nRR'] = len(k_rr)
out['MRR'] = k_rr.mean()
out['SDRR'] = k_rr.std(ddof=1)
out['CV'] = out['SDRR'] / out['MRR'] * 100
out['ndRR'] = len(d)
out['MdRR'] = d.mean()
out['SDdRR'] = d.std(ddof=1)
out['rMSSD'] = np.sqrt(np.mean(d**2))
out['nNN'] = int(np.sum(np.abs(d) > 20))
out['pNN'] = out['nNN'] / len(d) * 100
seg_ms = 60000.0
nseg = int(np.ceil(beats[-1] / seg_ms))
seg = np.minimum((end[kept] // seg_ms).astype(int), nseg - 1)
means = np.array([k_rr[seg == s].mean() for s in range(nseg)])
sds = np.array([k_rr[seg == s].std(ddof=1) for s in range(nseg)])
out['nSegment'] = nseg
out['MANN'] = means.mean(); out['SDANN'] = means.std(ddof=1)
out['MSDNN'] = sds.mean(); out['SDSDNN'] = sds.std(ddof=1)
out['seg1_count'] = int(np.sum(seg == 0)); out['seg1_mean'] = means[0]; out['seg1_sd'] = sds[0]
out['last_count'] = int(np.sum(seg == nseg - 1))
a = np.array(pairs)
out['SD1'] = ((a[:, 1] - a[:, 0]) / np.sqrt(2)).std(ddof=1)
out['SD2'] = ((a[:, 1] + a[:, 0]) / np.sqrt(2)).std(ddof=1)
# Triangular index with 1/128 s bins: intervals over the highest bin.
b = 1000 / 128
counts = np.bincount((np.floor(k_rr / b) - np.floor(k_rr.min() / b)).astype(int))
out['tri_index'] = len(k_rr) / counts.max()
# Spectrum: natural cubic spline at 4 Hz from the first to the last kept beat,
# linear trend removed, Welch with 256-point periodic Hann windows, 50 %
# overlap, each window's mean removed; bands [lo, hi) summed times df.
ts = end[kept] / 1000
grid = ts[0] + np.arange(int((ts[-1] - ts[0]) * 4) + 1) / 4
y = detrend(CubicSpline(ts, k_rr, bc_type='natural')(grid), type='linear')
f, p = welch(y, fs=4, window='hann', nperseg=256, noverlap=128, detrend='constant')
df = f[1] - f[0]
def band(lo, hi):
    m = (f >= lo) & (f < hi)
    return p[m].sum() * df, f[m][np.argmax(p[m])]
out['VLF'], out['VLFpeak'] = band(0, 0.04)
out['LF'], out['LFpeak'] = band(0.04, 0.15)
out['HF'], out['HFpeak'] = band(0.15, 0.40)
for k, v in out.items():
    print(f'{k} = {v:.10g}')
