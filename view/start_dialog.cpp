#include "view/start_dialog.h"

#include "host/error.h"
#include "view/built_in_controller.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QSerialPortInfo>
#include <QVBoxLayout>

namespace kmr {

namespace {

template <typename Widget> Widget *named(Widget *widget, const char *object, const QString &name)
{
    widget->setObjectName(object);
    widget->setAccessibleName(name);
    return widget;
}

// A text that is not in the list is added.
void choose(QComboBox &box, const QString &text)
{
    if (box.findText(text) < 0)
        box.addItem(text);
    box.setCurrentText(text);
}

} // namespace

StartDialog::StartDialog(const ProjectSettings &settings, const Drivers &drivers, QWidget *parent)
    : QDialog(parent), m_settings(settings), m_drivers(drivers),
      m_simulated(new QRadioButton(tr("A &simulated controller, built in"))),
      m_tcp(new QRadioButton(tr("&TCP connection"))),
      m_serial(new QRadioButton(tr("Serial &port"))),
      m_host(named(new QLineEdit, "host", tr("Name or address of the host"))),
      m_port(named(new QSpinBox, "port", tr("TCP port"))),
      m_device(named(new QComboBox, "device", tr("Serial port"))),
      m_baud(named(new QComboBox, "baud", tr("Bits a second"))),
      m_frame(named(new QComboBox, "frame", tr("Frame format"))),
      m_station(named(new QSpinBox, "station", tr("Station"))), m_tagEdit(new TagEdit),
      m_tags(named(new QListWidget, "tags", tr("Tags to show"))),
      m_verdict(named(new QLabel, "linkVerdict", tr("What is wrong with the link")))
{
    setWindowTitle(tr("Open a line"));
    auto *buttons = new QDialogButtonBox;
    m_start = buttons->addButton(tr("&Open"), QDialogButtonBox::AcceptRole);
    buttons->addButton(QDialogButtonBox::Cancel);
    m_start->setObjectName("start");
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(makeLinkChoice());
    layout->addWidget(m_verdict);
    layout->addWidget(makeTagList(), 1);
    layout->addWidget(buttons);
    m_verdict->setWordWrap(true);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    showSettings(settings);
    for (QRadioButton *button : {m_simulated, m_tcp, m_serial})
        connect(button, &QRadioButton::toggled, this, [this] { judge(); });
    connect(m_host, &QLineEdit::textChanged, this, [this] { judge(); });
    connect(m_device, &QComboBox::editTextChanged, this, [this] { judge(); });
    connect(m_station, QOverload<int>::of(&QSpinBox::valueChanged), this,
            [this] { renewReader(); });
    renewReader();
    judge();
}

QWidget *StartDialog::makeLinkChoice()
{
    auto *box = new QGroupBox(tr("Link"));
    m_simulated->setObjectName("simulated");
    m_tcp->setObjectName("tcp");
    m_serial->setObjectName("serial");
    m_port->setRange(1, 65535);
    m_device->setEditable(true);
    for (const int baud : {9600, 19200, 38400, 57600, 115200})
        m_baud->addItem(QString::number(baud));
    m_frame->addItems({"7E1", "7N2", "7O1", "8N1", "8E1", "8O1"});
    m_station->setRange(MIN_STATION, MAX_STATION);
    auto *tcp = new QHBoxLayout;
    tcp->addWidget(m_host, 1);
    tcp->addWidget(m_port);
    auto *serial = new QHBoxLayout;
    serial->addWidget(m_device, 1);
    serial->addWidget(m_baud);
    serial->addWidget(m_frame);
    auto *form = new QFormLayout(box);
    form->addRow(m_serial, serial);
    form->addRow(m_tcp, tcp);
    form->addRow(m_simulated);
    form->addRow(tr("Stat&ion of tags that name none:"), m_station);
    return box;
}

QWidget *StartDialog::makeTagList()
{
    auto *box = new QGroupBox(tr("Tags"));
    auto *remove = named(new QPushButton(tr("&Remove")), "removeTag", tr("Remove the marked tags"));
    remove->setAutoDefault(false);
    m_tags->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_tags->setMinimumHeight(120);
    auto *layout = new QVBoxLayout(box);
    layout->addWidget(m_tagEdit);
    layout->addWidget(m_tags, 1);
    layout->addWidget(remove, 0, Qt::AlignRight);
    connect(m_tagEdit, &TagEdit::tagGiven, this,
            [this](const Tag &tag) { m_tags->addItem(tag.text); });
    connect(remove, &QPushButton::clicked, this, [this] { qDeleteAll(m_tags->selectedItems()); });
    return box;
}

void StartDialog::fillPorts()
{
    for (const QSerialPortInfo &port : QSerialPortInfo::availablePorts()) {
        m_device->addItem(port.systemLocation());
        m_device->setItemData(m_device->count() - 1,
                              QString("%1 %2").arg(port.manufacturer(), port.description()),
                              Qt::ToolTipRole);
    }
}

void StartDialog::showSettings(const ProjectSettings &settings)
{
    fillPorts();
    m_host->setText("192.168.0.10");
    m_port->setValue(LinkAddress().port);
    m_simulated->setChecked(settings.link.isEmpty());
    m_station->setValue(settings.station);
    m_tags->addItems(settings.tags.isEmpty() && settings.link.isEmpty() ? BuiltInController::tags()
                                                                        : settings.tags);
    if (settings.link.isEmpty())
        return;
    const LinkAddress address = parseLink(settings.link);
    if (address.kind == LinkAddress::Kind::Tcp) {
        m_tcp->setChecked(true);
        m_host->setText(address.host);
        m_port->setValue(address.port);
        return;
    }
    m_serial->setChecked(true);
    m_device->setCurrentText(address.device);
    choose(*m_baud, QString::number(address.baud));
    const QString frame = settings.link.section("frame=", 1).section('&', 0, 0);
    if (!frame.isEmpty())
        choose(*m_frame, frame.toUpper());
}

QString StartDialog::link() const
{
    if (isSimulated())
        return {};
    if (m_tcp->isChecked()) {
        const QString host = m_host->text().trimmed();
        return QString(host.contains(':') && !host.startsWith('[') ? "tcp://[%1]:%2"
                                                                   : "tcp://%1:%2")
            .arg(host)
            .arg(m_port->value());
    }
    return QString("serial://%1?baud=%2&frame=%3")
        .arg(m_device->currentText().trimmed(), m_baud->currentText(), m_frame->currentText());
}

void StartDialog::judge()
{
    QString verdict;
    try {
        if (!isSimulated())
            parseLink(link());
    } catch (const Error &error) {
        verdict = error.text();
    }
    for (QWidget *widget : {static_cast<QWidget *>(m_device), static_cast<QWidget *>(m_baud),
                            static_cast<QWidget *>(m_frame)})
        widget->setEnabled(m_serial->isChecked());
    m_host->setEnabled(m_tcp->isChecked());
    m_port->setEnabled(m_tcp->isChecked());
    m_verdict->setText(verdict);
    m_verdict->setVisible(!verdict.isEmpty());
    m_start->setEnabled(verdict.isEmpty());
}

void StartDialog::renewReader()
{
    m_settings.station = m_station->value();
    try {
        m_tagEdit->setReader(tagReaderOf(m_settings, m_drivers));
    } catch (const Error &) { // about the file of names: opening the line reports it
        ProjectSettings settings = m_settings;
        settings.names.clear();
        m_tagEdit->setReader(tagReaderOf(settings, m_drivers));
    }
}

ProjectSettings StartDialog::settings() const
{
    ProjectSettings settings = m_settings;
    settings.link = link();
    settings.tags.clear();
    for (int i = 0; i < m_tags->count(); ++i)
        settings.tags.append(m_tags->item(i)->text());
    return settings;
}

} // namespace kmr
