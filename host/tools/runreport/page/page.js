// Puts the page together.

function missingPart(report) {
    if (!report.missing.length) return '';
    return make(
            'section', {id: 'missing'},
            make('div', {class: 'section-head'}, make('h2', {}, 'Missing in this report')),
            make('ul', {}, report.missing.map((reason) => make('li', {class: 'mono'}, reason))));
}

function drawPage() {
    const report = JSON.parse(document.getElementById('report').textContent);
    document.getElementById('page').append(
            ...[headerPart(report),
                problemsPart(report),
                framesPart(report),
                timelinePart(report),
                logPart(report),
                missingPart(report),
                make('footer', {}, 'Facts of this page for programs: report.json, beside it.'),
    ].filter((part) => part !== ''));
}

drawPage();
