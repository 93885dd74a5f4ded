// What the test runner of this checkout reads: a line for each test, and END when the file is through.

export default async function* lines(events) {
    for await (const { type, data } of events) {
        if (type === "test:pass") {
            yield data.skip === undefined ? `PASS ${data.name}\n` : `SKIP ${data.name}: ${data.skip}\n`;
        } else if (type === "test:fail") {
            yield `FAIL ${data.name}: ${indent(reasonOf(data.details.error))}\n`;
        }
    }
    yield "END\n";
}

/** The error itself: the runner wraps it in one of its own. */
function reasonOf(error) {
    const cause = error?.cause instanceof Error ? error.cause : error;
    return String(cause?.stack ?? cause?.message ?? cause);
}

function indent(text) {
    return text.replaceAll("\n", "\n    ");
}
