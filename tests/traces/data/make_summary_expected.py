#!/usr/bin/env python3
# Writes summary_expected.txt, the text that the trace summary must give for
# the twenty values below. The figures come from numpy; the distribution table
# is rebuilt from its definition (bins anchored at multiples of the width,
# counters below and above the range). Run it from this directory.
import math
import numpy as np

# Twenty exponential draws with six significant digits, as a trace file holds them.
x = np.array([1.36861, 3.60529, 0.948984, 1.16564, 4.43904, 5.38815, 8.24903, 0.135134, 0.91128, 2.04891,
              4.85969, 0.212862, 1.46996, 0.764582, 8.56187, 1.63337, 0.564405, 2.19458, 0.419506, 0.471151])
n = len(x)
m = float(np.mean(x))
var = float(np.var(x, ddof=1))


def g(v):
    # No figure may lie so close to a rounding boundary of its six digits
    # that the order of summation could change the text.
    text = '%g' % v
    assert text == '%g' % (v * (1 + 1e-10)) == '%g' % (v * (1 - 1e-10)), text
    return text


lines = ["Trace statistics: ", "=" * 27, "Number of elements: %d" % n,
         "Smallest value: " + g(x.min()), "Largest value: " + g(x.max())]
for k in range(0, 6):
    lines.append("Moment %d: %s" % (k, g(np.mean(x ** k))))
lines.append("Variance: " + g(var))
for i in range(0, 4):
    for j in range(0, 4):
        lines.append("Joint moment %d, %d: %s" % (i, j, g(np.sum(x[:-1] ** i * x[1:] ** j) / (n - 1))))
for l in range(0, 6):
    lines.append("Autocovariance at lag %d: %s" % (l, g(np.sum((x[:n - l] - m) * (x[l:] - m)) / n)))
for l in range(0, 6):
    lines.append("Autocorrelation at lag %d: %s" % (l, g(np.sum((x[:n - l] - m) * (x[l:] - m)) / ((n - l - 1) * var))))

lower, upper = float(x.min()), float(x.max())
width = (upper - lower) / 1000.0
b = int(abs(lower - upper) / width)
counter = [0] * (b + 2)
for v in x:
    v = float(v)
    if v < lower:
        counter[0] += 1
    elif v > upper:
        counter[b + 1] += 1
    else:
        counter[min(math.trunc(v / width) - math.trunc(lower / width) + 1, b + 1)] += 1
lines.append("")
lines.append("t\t\tpdf\t\tcdf")
lines.append("=\t\t===\t\t===")
c = counter[0] / n
cdf = [(lower, c)]
pdf = []
for i in range(b):
    f = counter[i + 1] / n
    c += f
    pdf += [(i * width + lower, f / width), ((i + 1) * width + lower, f / width)]
    cdf.append(((i + 1) * width + lower, c))
pdf.append((b * width + lower, counter[b] / n / width))
for i in range(len(cdf)):
    lines.append("%.5f\t\t%.5f\t\t%.5f" % (cdf[i][0], pdf[2 * i][1], cdf[i][1]))

with open("summary_expected.txt", "w") as out:
    out.write("\n".join(lines) + "\n")
