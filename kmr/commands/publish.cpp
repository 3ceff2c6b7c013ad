// kmr publish: values to an MQTT broker, and writes from there.
#include "kmr/command_definition.h"
#include "kmr/commands/commands.h"
#include "kmr/options.h"
#include "kmr/publish/publisher.h"
#include "kmr/stop_signal.h"

namespace kmr {

namespace {

const char *const HELP =
    R"(Polls the tags as 'kmr watch' does and keeps a retained message for each:
  PREFIX/NAME          {"value":21.5,"unit":"C","quality":"good","time":...,"cause":null}
  PREFIX/$state        online, or offline (also when kmr or its network fails)
  PREFIX/$line         figures of the line, every ten seconds
  PREFIX/NAME/set      requests to write, with --allow-write: 21.5 or {"value":21.5,"id":"a7"}
  PREFIX/NAME/outcome  what came of them: confirmed, refused, no answer, unknown or not sent
While the broker is away messages wait in the spool, in order and with their own times. It
outlasts kill -9 and a power cut, except for the last second. The file of names says what may
be written (column writable) and which changes are too small (column deadband).

User and password are the two lines of --credentials, or KMR_MQTT_USER and
KMR_MQTT_PASSWORD of the environment. kmr.toml may hold the options in a section:
  [publish]
  broker = "mqtts://broker.example"
  prefix = "plant/line1"

)";
const char *const EXAMPLES = R"(

Examples:
  kmr publish D100 X0x8 --broker mqtt://192.168.0.2 --link tcp://192.168.0.10:8888
  kmr publish --names names.csv boiler.temp --prefix plant/line1 --allow-write
  kmr publish --names names.csv boiler.temp --sparkplug plant/line1
  kmr publish --broker mqtts://broker.example --ca ca.pem --credentials broker.login)";

constexpr double MILLISECONDS_EACH_HOUR = 3600000;
constexpr double BYTES_EACH_MEGABYTE = 1e6;

struct PublishOptions {
    std::vector<std::string> tags;
    std::string broker;
    std::string prefix = "kmr";
    std::string sparkplug; // GROUP/NODE, or empty
    std::string mqtt = "5";
    std::string payload = "json";
    double heartbeat = 60; // seconds
    int cycle = 0;         // milliseconds; 0: the shortest
    std::string ca;
    std::string certificate;
    std::string key;
    std::string credentials;
    std::string spool = "kmr-publish.spool";
    double spoolSize = 64; // megabytes
    double spoolAge = 168; // hours
    bool allowsWrites = false;
    std::string metrics; // empty: none
    std::optional<double> seconds;
};

bool isSparkplug(const PublishOptions &own)
{
    return !own.sparkplug.empty();
}

BrokerSettings brokerOf(const PublishOptions &own)
{
    if (own.broker.empty())
        throw Error(ErrorKind::Usage, "no broker: name it with --broker, the environment variable "
                                      "KMR_BROKER or in kmr.toml below [publish]: broker = "
                                      "\"mqtt://192.168.0.2\"");
    BrokerSettings broker;
    readBrokerUrl(toQString(own.broker), broker);
    readCredentials(toQString(own.credentials), broker);
    broker.isMqtt5 = own.mqtt == "5";
    broker.isSparkplug = isSparkplug(own);
    broker.authorities = toQString(own.ca);
    broker.certificate = toQString(own.certificate);
    broker.key = toQString(own.key);
    checkTls(broker);
    return broker;
}

ExitCode runPublish(const Options &options, const PublishOptions &own)
{
    PublisherSettings settings;
    settings.tags = toQStrings(own.tags);
    settings.prefix = toQString(isSparkplug(own) ? own.sparkplug : own.prefix);
    settings.broker = brokerOf(own);
    settings.form = own.payload == "json" ? PayloadForm::Json : PayloadForm::Plain;
    if (!isSparkplug(own)) // which publishes changes only
        settings.heartbeat = std::chrono::milliseconds(static_cast<qint64>(1000 * own.heartbeat));
    settings.cycle = std::chrono::milliseconds(own.cycle);
    settings.seconds = own.seconds;
    settings.spool = toQString(own.spool);
    settings.spoolLimits.bytes = static_cast<qint64>(BYTES_EACH_MEGABYTE * own.spoolSize);
    settings.spoolLimits.milliseconds = static_cast<qint64>(MILLISECONDS_EACH_HOUR * own.spoolAge);
    settings.allowsWrites = own.allowsWrites;
    settings.metrics = toQString(own.metrics);
    try {
        return Publisher(options, settings).run();
    } catch (const Error &) {
        if (stopFlag()) // the end was asked for before the line was there
            return ExitCode::Ok;
        throw;
    }
}

void addBrokerOptions(CommandDefinition &command, PublishOptions &own)
{
    command.add("--broker", own.broker,
                "mqtt://HOST[:PORT] or mqtts://HOST[:PORT] (else kmr.toml, else "
                "environment: KMR_BROKER)");
    command.add("--prefix", own.prefix, "of all topics; each publisher needs its own")
        .showDefault();
    command.add("--sparkplug", own.sparkplug,
                "GROUP/NODE: publish by Sparkplug B as this node instead, with all values in its "
                "birth; --prefix, --payload and --heartbeat have no effect");
    command.add("--mqtt", own.mqtt, "version of MQTT: 5 or 3.1.1")
        .showDefault()
        .oneOf({"5", "3.1.1"});
    command.add("--ca", own.ca, "file of the certificates to trust (default: the system's)");
    command.add("--certificate", own.certificate, "file of the client's certificate");
    command.add("--key", own.key, "file of the certificate's key");
    command.add("--credentials", own.credentials,
                "file with the user in its first line and the password in its second");
}

void addSpoolOptions(CommandDefinition &command, PublishOptions &own)
{
    command.add("--spool", own.spool, "file of the messages that wait for the broker")
        .showDefault();
    command
        .add("--spool-size", own.spoolSize,
             "megabytes of messages to keep; the oldest are dropped first")
        .showDefault()
        .numberBetween(0.001, 100000);
    command.add("--spool-age", own.spoolAge, "hours that a message may wait")
        .showDefault()
        .numberBetween(0.001, 100000);
}

} // namespace

void addPublish(CLI::App &app, Command &chosen, OptionReader &reader)
{
    const auto own = std::make_shared<PublishOptions>();
    CommandDefinition command(app, "publish", "Publish values to an MQTT broker");
    command.add("TAG", own->tags, WANTED_TAGS);
    addBrokerOptions(command, *own);
    command.add("--payload", own->payload, "form of the messages: json or plain")
        .showDefault()
        .oneOf({"json", "plain"});
    command
        .add("--heartbeat", own->heartbeat,
             "seconds after which an unchanged value is published again; 0: never")
        .showDefault()
        .numberBetween(0, 86400);
    command
        .add("--cycle", own->cycle,
             "refresh all tags once in so many milliseconds (default: as fast as the line)")
        .between(1, 3600000);
    addSpoolOptions(command, *own);
    command.addFlag("--allow-write", own->allowsWrites,
                    "carry out requests to write names that are marked writable");
    command.add("--metrics", own->metrics,
                "ADDRESS:PORT at which Prometheus finds figures, for example 127.0.0.1:9100");
    command.add("--for", own->seconds, "end after this many seconds").aboveZero(1e9);
    command.setHelp(std::string(HELP) + TAG_HELP + EXAMPLES);
    reader.addSection("publish", command,
                      {"broker", "prefix", "sparkplug", "mqtt", "payload", "heartbeat", "cycle",
                       "ca", "certificate", "key", "credentials", "spool", "spool-size",
                       "spool-age", "allow-write", "metrics"},
                      {"ca", "certificate", "key", "credentials", "spool"}, "KMR_BROKER");
    command.setAction(chosen, own, runPublish);
}

} // namespace kmr
