// Head of the page, problems and frames.

const phaseLabels = {
    device: 'Device start', 'start-up': 'Start-up', open: 'Open session', register: 'Register',
    configure: 'Configure', allocate: 'Allocate', fill: 'Fill inputs', submit: 'Submit',
    shutter: 'Wait for shutter', result: 'Wait for result', dump: 'Write dump',
    close: 'Close session', exit: 'Exit',
};
const phaseLabel = (name) => phaseLabels[name] || name;

// [look, sign, text]
function verdict({run, problems, phases}) {
    const last = phases.length ? ` during “${phaseLabel(phases[phases.length - 1].name)}”` : '';
    const failure = {
        signal: `Ended by ${run.signal}${last}`,
        'usage-error': 'Usage error: nothing was run',
        'no-device': 'The run did not start',
        other: `Ended with status ${run.status}`,
        unknown: phases.length && phases[phases.length - 1].name !== 'exit' ? `The log ends${last}` : '',
    }[run.ending];
    if (failure) return ['failed', '✕', failure];
    const errors = problems.filter((problem) => problem.severity === 'error').length;
    if (errors) return ['failed', '!', `Finished with ${plural(errors, 'error')}`];
    if (!problems.length) return ['', '✓', 'Finished'];
    return ['problems', '!', `Finished with ${plural(problems.length, 'warning')}`];
}

function headerPart(report) {
    const {run} = report;
    const [look, sign, text] = verdict(report);
    const command = ['./run', ...run.options, ...run.command.slice(1)];
    document.title = `${text}: ${command.join(' ')}`;
    return html`<header class="${look}">
        <h1><span aria-hidden="true">${sign}</span> ${text}</h1>
        <div class="command mono">${command.map(shellWord).join(' ')}</div>
        ${facts([
            ['Took', run.durationUs ? duration(run.durationUs) : 'not known'],
            ['Status', run.status === null ? 'not known' : run.status],
            ['Device', run.device],
            ['Frames written', count(report.dumps.length)],
            ['Binder calls', run.place === 'workstation' ? count(report.calls.length) : ''],
            ['Log lines', count(report.log.length + report.omittedLogLines)],
            ['Started', run.started && run.started.replace('T', ' ').replace(/[+-]\d+$/, '')],
        ])}</header>`;
}

function problemPart(problem, log) {
    const where = [
        problem.phase ? `in “${phaseLabel(problem.phase)}”` : '', problem.timeUs ? `at ${duration(problem.timeUs)}` : '',
        problem.count > 1 ? `${count(problem.count)} times` : '',
    ].filter(Boolean).join(', ');
    const line = log.findIndex(({message}) => message === problem.text);
    const link = html` · <a href="#line-${line}">show in the log</a>`;
    const explained = [['Cause', problem.cause], ['Cure', problem.cure]].filter(([, text]) => text);
    return html`<article class="problem ${problem.severity}">
        <h3 class="${problem.logged ? 'mono' : ''}">${problem.logged ? problem.text : withCode(problem.text)}</h3>
        <p class="where">${where}${problem.logged ? link : ''}</p>
        <dl>${explained.map(([term, text]) => html`<dt>${term}</dt><dd>${withCode(text)}</dd>`)}</dl>
        </article>`;
}

function problemsPart({problems, log}) {
    if (!problems.length) return '';
    const wrong = problems.some((problem) => problem.severity === 'error');
    return html`<section id="problems">
        <div class="section-head"><h2>${wrong ? 'What went wrong' : 'What to know'}</h2></div>
        ${problems.map((problem) => problemPart(problem, log))}</section>`;
}

function framePart(frame) {
    const name = fileName(frame.path);
    const picture = frame.picture ?
            html`<img src="${frame.picture}" alt="Picture of ${name}">` :
            html`<div class="no-picture">${frame.note || 'not a picture'}</div>`;
    return html`<figure>${picture}<figcaption>
        <div class="name" title="${frame.path}">${name} ${
            frame.leftUnread ? html`<span class="tag">opened, no row read</span>` : ''}</div>
        ${facts([
            ['Format', frame.format],
            ['Width × height', frame.width ? `${frame.width} × ${frame.height}` : ''],
            ['Stride', frame.stride ? `${count(frame.stride)} bytes` : ''],
            ['Scan lines', frame.scanlines ? count(frame.scanlines) : ''],
            ['Size', frame.bytes || !frame.note ? `${count(frame.bytes)} bytes` : ''],
            ['JPEG', frame.pictureBytes ? `first ${count(frame.pictureBytes)} bytes` : ''],
            ['Opened', frame.timesOpened > 1 ? `${frame.timesOpened} times` : ''],
        ])}${frame.picture && frame.note ? html`<div class="muted note">${frame.note}</div>` : ''}
        </figcaption></figure>`;
}

function framesPart(report) {
    const column = (id, title, frames, none) => html`<div id="${id}"><h3>${title}</h3>${
        frames.length ? frames.map(framePart) : html`<div class="no-picture">${none}</div>`}</div>`;
    return html`<section id="frames"><div class="section-head"><h2>Frames</h2>
        <span class="muted">reduced pictures of what the tool read and what it wrote</span></div>
        <div class="frames">
        ${column('sources', 'In', report.sources, 'The tool opened no source frame.')}
        ${column('dumps', 'Out', report.dumps, report.run.place === 'imported' ? 'No dump of this run is in the folder.' : 'The tool wrote no file.')}</div></section>`;
}
