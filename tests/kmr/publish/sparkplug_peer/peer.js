// Another program's encoder and decoder of Sparkplug B. Each line on stdin is answered with a line:
// "decode HEX" with the payload as JSON, "encode JSON" with its bytes in hexadecimal digits.
const sparkplug = require("sparkplug-payload").get("spBv1.0");

// Its 64-bit integers are objects.
const plain = (key, value) => (value && value.low !== undefined ? Number(value) : value);

require("readline").createInterface({ input: process.stdin }).on("line", (line) => {
    const [verb, text] = [line.slice(0, 6), line.slice(7)];
    if (verb === "decode") {
        const payload = sparkplug.decodePayload(Buffer.from(text, "hex"));
        console.log(JSON.stringify(payload, plain));
    } else {
        console.log(Buffer.from(sparkplug.encodePayload(JSON.parse(text))).toString("hex"));
    }
});
