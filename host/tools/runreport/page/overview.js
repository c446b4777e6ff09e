// Head of the page, problems and frames.

const phaseLabels = {
    device: 'Device start',
    'start-up': 'Start-up',
    open: 'Open session',
    register: 'Register',
    configure: 'Configure',
    allocate: 'Allocate',
    fill: 'Fill inputs',
    submit: 'Submit',
    shutter: 'Wait for shutter',
    result: 'Wait for result',
    dump: 'Write dump',
    close: 'Close session',
    exit: 'Exit',
};
const phaseLabel = (name) => phaseLabels[name] || name;

const isError = (problem) => problem.severity === 'error';

function verdict(report) {
    const {run, problems, phases} = report;
    const last = phases.length ? ` during “${phaseLabel(phases[phases.length - 1].name)}”` : '';
    switch (run.ending) {
        case 'signal':
            return {look: 'failed', sign: '✕', text: `Ended by ${run.signal}${last}`};
        case 'usage-error':
            return {look: 'failed', sign: '✕', text: 'Usage error: nothing was run'};
        case 'no-device':
            return {look: 'failed', sign: '✕', text: 'The run did not start'};
        case 'other':
            return {look: 'failed', sign: '✕', text: `Ended with status ${run.status}`};
        default:
    }
    if (!problems.length) return {look: '', sign: '✓', text: 'Finished'};
    const errors = problems.filter(isError).length;
    return errors ? {look: 'failed', sign: '!', text: `Finished with ${plural(errors, 'error')}`} :
                    {
                        look: 'problems',
                        sign: '!',
                        text: `Finished with ${plural(problems.length, 'warning')}`
                    };
}

function headerPart(report) {
    const {run} = report;
    const {look, sign, text} = verdict(report);
    const words = ['./run', ...run.options, ...run.command.slice(1)];
    document.title = `${text}: ${words.join(' ')}`;
    return make(
            'header', {class: look},
            make('div', {class: 'verdict'},
                 make('span', {class: 'badge', 'aria-hidden': 'true'}, sign),
                 make('h1', {id: 'verdict'}, text)),
            make('div', {class: 'command mono'}, words.map(shellWord).join(' ')), facts('facts', [
                ['Took', duration(run.durationUs)],
                ['Status', String(run.status)],
                ['Frames written', count(report.dumps.length)],
                ['Binder calls', count(report.calls.length)],
                ['Log lines', count(report.log.length + report.omittedLogLines)],
                ['Started', run.started.replace('T', ' ').replace(/[+-]\d+$/, '')],
            ]));
}

function problemPart(problem) {
    const where = [
        problem.phase ? `in “${phaseLabel(problem.phase)}”` : '', `at ${duration(problem.timeUs)}`,
        problem.count > 1 ? `${count(problem.count)} times` : ''
    ].filter(Boolean).join(', ');
    const explanation =
            [['Cause', problem.cause], ['Cure', problem.cure]].filter(([, text]) => text);
    return make(
            'article', {class: `problem ${problem.severity}`},
            make('h3', {class: problem.logged ? 'mono' : null}, problem.text),
            make('p', {class: 'where'}, where, problem.logged ? ' · ' : '',
                 problem.logged ?
                         make('button', {class: 'link', onclick: () => showMessage(problem.text)},
                              'show in the log') :
                         ''),
            explanation.length ?
                    make('dl', {},
                         explanation.map(
                                 ([
                                     term, text
                                 ]) => [make('dt', {}, term), make('dd', {}, withCode(text))])) :
                    '');
}

function problemsPart(report) {
    if (!report.problems.length) return '';
    return make(
            'section', {id: 'problems'},
            make('div', {class: 'section-head'},
                 make('h2', {},
                      report.problems.some(isError) ? 'What went wrong' : 'What to know')),
            report.problems.map(problemPart));
}

function framePart(frame) {
    const has = (value, text) => value ? text : '';
    return make(
            'figure', {},
            frame.picture ? make('img', {
                src: frame.picture,
                width: frame.pictureWidth,
                height: frame.pictureHeight,
                alt: `Picture of ${fileName(frame.path)}`
            }) :
                            make('div', {class: 'no-picture'}, frame.note || 'not a picture'),
            make('figcaption', {},
                 make('div', {class: 'name', title: frame.path}, fileName(frame.path), ' ',
                      frame.leftUnread ? make('span', {class: 'tag'}, 'opened, no row read') : ''),
                 facts('geometry',
                       [
                           ['Format', frame.format],
                           ['Width × height', has(frame.width, `${frame.width} × ${frame.height}`)],
                           ['Stride', has(frame.stride, `${count(frame.stride)} bytes`)],
                           ['Scan lines', has(frame.scanlines, count(frame.scanlines))],
                           ['Size', `${count(frame.bytes)} bytes`],
                           ['Opened', frame.timesOpened > 1 ? `${frame.timesOpened} times` : ''],
                       ]),
                 frame.picture && frame.note ? make('div', {class: 'muted note'}, frame.note) :
                                               ''));
}

function framesPart(report) {
    const column = (id, title, frames, none) =>
            make('div', {id}, make('h3', {}, title),
                 frames.length ? frames.map(framePart) : make('div', {class: 'no-picture'}, none));
    return make(
            'section', {id: 'frames'},
            make('div', {class: 'section-head'}, make('h2', {}, 'Frames'),
                 make('span', {class: 'muted'},
                      'reduced pictures of what the tool read and what it wrote')),
            make('div', {class: 'frames'},
                 column('sources', 'In', report.sources, 'The tool opened no source frame.'),
                 column('dumps', 'Out', report.dumps, 'The tool wrote no file.')));
}
