// The timeline's values as tables.

function phaseTable(report) {
    return table(
            [
                {title: 'Step', value: (phase) => phaseLabel(phase.name)},
                {title: 'From (ms)', number: true, value: (phase) => stamp(phase.startUs)},
                {
                    title: 'Took',
                    number: true,
                    value: (phase) => duration(phase.endUs - phase.startUs)
                },
                {title: 'End', value: (phase) => phase.end.replace('-', ' ')},
                {title: 'What', value: (phase) => phase.detail},
            ],
            report.phases.map((phase) => ({...phase, failed: phase.end !== 'done'})));
}

// A browser is slow with more rows.
const maxCallRows = 2000;

const callTableTitle = (calls) => `Table of ${plural(calls.length, 'binder call')}` +
        (calls.length > maxCallRows ? `, the first ${count(maxCallRows)} shown` : '');

function callTable(report) {
    return table(
            [
                {title: 'At (ms)', number: true, value: (call) => stamp(call.startUs)},
                {title: 'Took', number: true, value: (call) => duration(call.durationUs)},
                {title: '', value: (call) => call.incoming ? '←' : '→'},
                {title: 'Peer', value: (call) => call.peer},
                {title: 'Interface', value: (call) => call.interface},
                {title: 'Method', value: (call) => call.method + (call.oneway ? ' (oneway)' : '')},
                {title: 'Bytes', number: true, value: (call) => count(call.bytes)},
                {title: 'Descriptors', number: true, value: (call) => count(call.descriptors)},
                {title: 'Status', value: (call) => call.status},
            ],
            report.calls.slice(0, maxCallRows)
                    .map((call) => ({...call, failed: call.status !== 'OK'})));
}
