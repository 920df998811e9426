// What tests have found: a line each, and all that is known of a failure.
const indented = (text, depth) => text.split("\n").map((line) => "  ".repeat(depth) + line + "\n").join("");

export default async function* report(source) {
  for await (const { type, data } of source) {
    if (type === "test:pass" || type === "test:fail") {
      const hasFailed = type === "test:fail", error = data.details.error;
      yield indented(`${hasFailed ? "✖" : "✔"} ${data.name} (${Math.round(data.details.duration_ms)} ms)`, data.nesting);
      if (hasFailed) yield indented(String(error?.cause?.stack ?? error?.cause ?? error), data.nesting + 1);
    } else if (type === "test:stdout" || type === "test:stderr") {
      yield data.message;
    }
  }
}
