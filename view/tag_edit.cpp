#include "view/tag_edit.h"

#include "host/error.h"
#include "host/session/tag_write.h"

#include <QAbstractItemView>
#include <QCompleter>
#include <QHBoxLayout>
#include <QVBoxLayout>

namespace kmr {

namespace {

QString kindName(const Tag &tag)
{
    switch (tag.kind) {
    case ElementKind::Bit:
        return TagEdit::tr("%n bit(s)", nullptr, tag.count);
    case ElementKind::Word:
        return TagEdit::tr("%n word(s)", nullptr, tag.count);
    case ElementKind::Counter:
        return TagEdit::tr("%n counter(s)", nullptr, tag.count);
    case ElementKind::WordBit:
        break;
    }
    return TagEdit::tr("%n bit(s) of words", nullptr, tag.count);
}

QStringList completions(const NamedTagReader &reader)
{
    QStringList texts;
    if (reader.names() != nullptr) {
        for (const Name &name : reader.names()->names())
            texts.append(name.name);
    }
    return texts + reader.unnamed().areas();
}

} // namespace

QString describe(const Tag &tag)
{
    return TagEdit::tr("station %1, %2: %3, %4")
        .arg(tag.elements.station)
        .arg(runName(tag.elements), kindName(tag),
             whyNotWritable(tag).isEmpty() ? TagEdit::tr("can be written")
                                           : TagEdit::tr("can only be read"));
}

TagEdit::TagEdit(QWidget *parent)
    : QWidget(parent), m_edit(new QLineEdit), m_button(new QPushButton(tr("&Add tag"))),
      m_verdict(new QLabel)
{
    m_edit->setObjectName("tagText");
    m_edit->setPlaceholderText(tr("A tag: D100, X0x8, 2#D100/int16, or a name"));
    m_edit->setAccessibleName(tr("Tag to add"));
    m_edit->setClearButtonEnabled(true);
    m_button->setObjectName("addTag");
    m_button->setAutoDefault(false);
    m_verdict->setObjectName("tagVerdict");
    m_verdict->setWordWrap(true);
    m_verdict->setAccessibleName(tr("What the driver says of the tag"));
    auto *line = new QHBoxLayout;
    line->addWidget(m_edit, 1);
    line->addWidget(m_button);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addLayout(line);
    layout->addWidget(m_verdict);
    connect(m_edit, &QLineEdit::textChanged, this, [this] { judge(); });
    connect(m_edit, &QLineEdit::returnPressed, this, [this] { give(); });
    connect(m_button, &QPushButton::clicked, this, [this] { give(); });
    judge();
}

void TagEdit::setReader(const NamedTagReader &reader)
{
    m_reader = reader;
    auto *completer = new QCompleter(completions(reader), this);
    completer->setCaseSensitivity(Qt::CaseInsensitive);
    completer->setFilterMode(Qt::MatchContains);
    delete m_edit->completer();
    m_edit->setCompleter(completer);
    judge();
}

void TagEdit::judge()
{
    m_tag.reset();
    const QString text = m_edit->text().trimmed();
    QString verdict;
    if (m_reader && !text.isEmpty()) {
        try {
            m_tag = m_reader->read(text);
            verdict = describe(*m_tag);
        } catch (const Error &error) {
            verdict = error.text();
        }
    }
    m_verdict->setText(verdict);
    m_verdict->setVisible(!verdict.isEmpty());
    m_button->setEnabled(m_tag.has_value());
}

void TagEdit::give()
{
    if (!m_tag)
        return;
    const Tag tag = *m_tag;
    m_edit->clear();
    if (m_edit->completer() != nullptr)
        m_edit->completer()->popup()->hide();
    emit tagGiven(tag);
}

} // namespace kmr
