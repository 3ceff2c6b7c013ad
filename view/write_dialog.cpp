#include "view/write_dialog.h"

#include "host/error.h"
#include "view/outcome_text.h"
#include "view/quality_icon.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QKeyEvent>
#include <QLineEdit>
#include <QVBoxLayout>

namespace kmr {

namespace {

QStringList choicesOf(const Tag &tag)
{
    QStringList choices;
    for (const ValueText &text : tag.texts)
        choices.append(text.text);
    if (choices.isEmpty() && tag.kind == ElementKind::Bit && tag.count == 1)
        choices = QStringList{"0", "1"};
    return choices;
}

} // namespace

WriteDialog::WriteDialog(Tag tag, const QString &current, QWidget *parent)
    : QDialog(parent), m_tag(std::move(tag)), m_holds(new QLabel), m_edit(new QComboBox),
      m_sentence(new QLabel), m_outcome(new QLabel), m_write(new QPushButton(tr("&Write")))
{
    setWindowTitle(tr("Write %1").arg(m_tag.text));
    setMinimumWidth(440);
    m_edit->setObjectName("newValue");
    m_edit->setEditable(true);
    m_edit->setInsertPolicy(QComboBox::NoInsert);
    m_edit->addItems(choicesOf(m_tag));
    m_edit->setCurrentText({});
    m_edit->setAccessibleName(tr("New value"));
    m_sentence->setObjectName("sentence");
    m_outcome->setObjectName("outcome");
    for (QLabel *label : {m_sentence, m_outcome}) {
        label->setWordWrap(true);
        label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    }
    m_write->setObjectName("write");
    m_write->setAutoDefault(false); // Return in the field only moves on to the button
    m_write->installEventFilter(this);
    makeForm();
    connect(m_edit, &QComboBox::editTextChanged, this, [this] {
        if (!m_isWriting)
            m_outcome->clear();
        judge();
    });
    connect(m_edit->lineEdit(), &QLineEdit::returnPressed, this, [this] { m_write->setFocus(); });
    connect(m_write, &QPushButton::clicked, this, [this] { write(); });
    showCurrent(current);
}

void WriteDialog::makeForm()
{
    auto *buttons = new QDialogButtonBox;
    buttons->addButton(m_write, QDialogButtonBox::ActionRole);
    buttons->addButton(QDialogButtonBox::Close)->setAutoDefault(false);
    auto *form = new QFormLayout;
    form->addRow(tr("Tag:"), new QLabel(m_tag.text));
    form->addRow(tr("It holds:"), m_holds);
    form->addRow(tr("&New value:"), m_edit);
    auto *layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addWidget(m_sentence);
    layout->addWidget(m_outcome);
    layout->addStretch();
    layout->addWidget(buttons);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
}

// Return on the button presses it, unless it is still held since it moved on to the button.
bool WriteDialog::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() != QEvent::KeyPress)
        return QDialog::eventFilter(watched, event);
    const auto *key = static_cast<QKeyEvent *>(event);
    const bool isReturn = key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter;
    if (isReturn && !key->isAutoRepeat())
        m_write->click();
    return isReturn;
}

void WriteDialog::showCurrent(const QString &current)
{
    m_current = current;
    m_holds->setText(current.isEmpty() ? tr("not read yet") : current);
    if (m_outcome->text().isEmpty()) // else the sentence is about what was written
        judge();
}

void WriteDialog::judge()
{
    m_values.reset();
    const QString text = m_edit->currentText();
    QString sentence = tr("Type what the controller is to hold.");
    if (!text.trimmed().isEmpty()) {
        try {
            m_values = parseValues(m_tag, text);
            sentence = m_current.isEmpty()
                           ? tr("%1 will be %2.").arg(m_tag.text, withUnit(m_tag, *m_values))
                           : tr("%1 will be %2 instead of %3.")
                                 .arg(m_tag.text, withUnit(m_tag, *m_values), m_current);
        } catch (const Error &error) {
            sentence = error.text();
        }
    }
    m_sentence->setText(sentence);
    m_write->setEnabled(m_values.has_value() && !m_isWriting);
}

void WriteDialog::write()
{
    m_isWriting = true;
    m_write->setEnabled(false);
    m_outcome->setText(tr("Writing…"));
    emit confirmed(*m_values);
}

void WriteDialog::showOutcome(const WriteResult &result)
{
    m_isWriting = false;
    m_outcome->setText(writeOutcomeText(result));
    QPalette palette = m_outcome->palette();
    palette.setColor(QPalette::WindowText, result.request.isDone() ? goodColour() : badColour());
    m_outcome->setPalette(palette);
    m_write->setEnabled(m_values.has_value());
}

} // namespace kmr
