"""The work as a user of segyio would write it, the quick way: segyio_peer.py range|sort|floats|copy IN OUT [LIST]"""
import sys
import numpy, segyio

work, source, target = sys.argv[1:4]
with segyio.open(source, ignore_geometry=True) as given:
    given.mmap()
    if work == "floats":  # what a dataset is made of
        with open(target, "wb") as made:
            for trace in range(given.tracecount):
                made.write(bytes(given.header[trace].buf))
                given.trace.raw[trace].tofile(made)
        sys.exit()
    if work == "sort":
        order = numpy.lexsort((given.attributes(37)[:], given.attributes(21)[:]))
    elif work == "copy":  # and back
        order = numpy.arange(given.tracecount)
    else:
        wanted = numpy.loadtxt(sys.argv[4], dtype=int, ndmin=1)
        order = numpy.flatnonzero(numpy.isin(given.attributes(189)[:], wanted))
    spec = segyio.spec()
    spec.format, spec.samples, spec.tracecount = given.format, given.samples, len(order)
    with segyio.create(target, spec) as made:
        made.text[0] = given.text[0]
        made.bin = given.bin
        made.header = (given.header[trace] for trace in order)
        made.trace = given.trace.raw[:][order]
