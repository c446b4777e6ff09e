// What the rows of the timeline show: steps by name, marks, and their texts.

// Steps of one name share a row; the rows stand in the order of a run's first frame.
function phaseRows(phases) {
    const rows = new Map(Object.keys(phaseLabels)
                                 .filter((name) => phases.some((phase) => phase.name === name))
                                 .map((name) => [name, []]));
    for (const phase of phases) {
        if (!rows.has(phase.name)) rows.set(phase.name, []);
        rows.get(phase.name).push(phase);
    }
    return [...rows].map(([name, steps]) => ({name, steps}));
}

// About one label every 90 pixels, at 1, 2 or 5 times a power of ten.
function tickStep(range, width) {
    const rough = Math.max(range * 90 / Math.max(width, 90), 1);
    const power = 10 ** Math.floor(Math.log10(rough));
    return power * ([1, 2, 5].find((factor) => factor * power >= rough) || 10);
}

// With as many digits as tell one label from the next.
function tickText(micros, step) {
    const [size, unit] = micros < 1000 ? [1, 'µs'] : micros < 1e6 ? [1000, 'ms'] : [1e6, 's'];
    const digits = Math.max(0, Math.ceil(Math.log10(size / step)));
    return micros === 0 ? '0' : `${Number((micros / size).toFixed(digits))} ${unit}`;
}

// Marks that would fall on one pixel become one, whose text lists the first few.
function mergeMarks(marks, scale) {
    const byPixel = new Map();
    for (const mark of marks) {
        const x = Math.round(scale.x(mark.startUs));
        if (x < scale.left - 1 || x > scale.right + 1) continue;
        if (!byPixel.has(x)) byPixel.set(x, {x, width: 0, texts: [], count: 0, failed: false});
        const merged = byPixel.get(x);
        merged.width = Math.max(merged.width, scale.x(mark.endUs) - scale.x(mark.startUs));
        merged.failed = merged.failed || mark.failed;
        if (++merged.count <= 5) merged.texts.push(mark.text);
    }
    for (const merged of byPixel.values()) {
        if (merged.count > 5) merged.texts.push(`and ${count(merged.count - 5)} more`);
    }
    return [...byPixel.values()];
}

function callText(call) {
    const name = `${call.interface.slice(call.interface.lastIndexOf('.') + 1)}.${call.method}`;
    return `${name} ${call.incoming ? 'from' : 'to'} ${call.peer}\n` +
            `at ${stamp(call.startUs)} ms, took ${duration(call.durationUs)}, ${
                    plural(call.bytes, 'byte')}` +
            (call.descriptors ? `, ${plural(call.descriptors, 'descriptor')}` : '') +
            `, ${call.status}`;
}

function markRows(report) {
    const call = (one) => ({
        startUs: one.startUs,
        endUs: one.startUs + one.durationUs,
        failed: one.status !== 'OK',
        text: callText(one),
        name: one.method
    });
    const line = (one) =>
            ({startUs: one.timeUs, endUs: one.timeUs, text: `${one.tag}: ${one.message}`});
    return [
        {
            label: 'Calls out',
            className: 'call',
            marks: report.calls.filter((c) => !c.incoming).map(call)
        },
        {
            label: 'Calls in',
            className: 'call',
            named: true,
            marks: report.calls.filter((c) => c.incoming).map(call)
        },
        {
            label: 'Services’ log',
            className: 'mark',
            marks: report.log.filter((l) => l.from === 'services').map(line)
        },
        {
            label: 'Errors',
            className: 'mark error',
            marks: report.log.filter((l) => 'EF'.includes(l.priority) && l.priority).map(line)
        },
    ].filter((row) => row.marks.length);
}
