#include "headunit/inspector/sourcepanel.h"

#include "headunit/inspector/filedialog.h"
#include "headunit/sound/soundcontrol.h"
#include "headunit/sound/soundnames.h"
#include "headunit/sound/storedsources.h"

#include "platform/common/texts/language.h"

#include <QComboBox>
#include <QFileInfo>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>

#include <algorithm>

namespace headunit {

namespace {

constexpr int pollMs = 100;
enum Column { NameColumn, KindColumn, PathColumn, OpenColumn };

QString rowName(const char* what, HVAudio_source_id_e id)
{
    return QStringLiteral("%1_%2").arg(QLatin1String(what)).arg(int(id));
}

} // namespace

SourcePanel::SourcePanel(SoundControl* sound, QWidget* parent)
    : QWidget(parent)
    , m_sound(sound)
    , m_error(new QLabel(this))
    , m_status(new QLabel(this))
{
    auto* grid = new QGridLayout;
    grid->setVerticalSpacing(8);
    grid->setColumnStretch(PathColumn, 1);
    for (int i = 0; i < unitSourceCount; ++i)
        addRow(grid, i);

    m_error->setObjectName(QStringLiteral("source_error"));
    m_error->setWordWrap(true);
    m_error->setTextFormat(Qt::PlainText);
    m_status->setObjectName(QStringLiteral("output_status"));
    m_status->setTextFormat(Qt::PlainText);

    auto* layout = new QVBoxLayout(this);
    layout->setSpacing(10);
    layout->addWidget(new QLabel(tr("Source that is heard, and what plays as each:"), this));
    layout->addLayout(grid);
    layout->addWidget(m_error);
    layout->addWidget(new QLabel(tr("Chimes of the prompt channels:"), this));
    layout->addLayout(promptKeyRow());
    layout->addWidget(m_status);
    layout->addStretch();

    m_poll.setInterval(pollMs);
    connect(&m_poll, &QTimer::timeout, this, &SourcePanel::refreshPrompts);
    connect(cm::Language::instance(), &cm::Language::changed, this, &SourcePanel::retranslate);
    retranslate();
    refresh();
}

void SourcePanel::addRow(QGridLayout* grid, int index)
{
    const HVAudio_source_id_e id = unitSources[index].id;
    auto* name = new QRadioButton(this);
    name->setObjectName(rowName("source", id));
    auto* kind = new QComboBox(this);
    kind->setObjectName(rowName("kind", id));
    for (const SourceKindName& row : sourceKinds)
        kind->addItem(tr(row.text), int(row.kind));
    auto* path = new QLineEdit(this);
    path->setObjectName(rowName("path", id));
    path->setPlaceholderText(tr("Sound file"));
    auto* open = new QPushButton(tr("Open"), this);
    open->setObjectName(rowName("open", id));
    grid->addWidget(name, index, NameColumn);
    grid->addWidget(kind, index, KindColumn);
    grid->addWidget(path, index, PathColumn);
    grid->addWidget(open, index, OpenColumn);
    m_rows.append({id, name, kind, path});

    // "clicked" and "activated" are the user's doing only, so showing a change can't start another.
    connect(name, &QRadioButton::clicked, this, [this, id] {
        m_sound->play(id);
        keepPlayingSource(id);
        refresh();
    });
    connect(kind, QOverload<int>::of(&QComboBox::activated), this,
            [this, index, kind](int item) { onKindChosen(index, SourceKind(kind->itemData(item).toInt())); });
    connect(path, &QLineEdit::returnPressed, this, [this, index] { onPathEntered(index); });
    connect(open, &QPushButton::clicked, this, [this, index] { askForFile(index); });
}

QLayout* SourcePanel::promptKeyRow()
{
    auto* keys = new QHBoxLayout;
    for (int i = 0; i < promptKeyCount; ++i) {
        auto* key = new QPushButton(tr(promptKeys[i].text), this);
        key->setObjectName(QLatin1String(promptKeys[i].objectName));
        key->setCheckable(true);
        if (promptKeys[i].repeated)
            key->setToolTip(tr("Sounds until it is touched again"));
        connect(key, &QPushButton::clicked, this, [this, i] { onPromptTouched(i); });
        keys->addWidget(key);
        m_prompts.append(key);
    }
    return keys;
}

void SourcePanel::retranslate()
{
    for (int i = 0; i < unitSourceCount; ++i)
        m_rows[i].name->setText(nameOf(unitSources[i]));
}

void SourcePanel::refresh()
{
    for (const Row& row : std::as_const(m_rows)) {
        const SourceChoice choice = m_sound->source(row.id);
        row.name->setChecked(row.id == m_sound->playing());
        row.kind->setCurrentIndex(row.kind->findData(int(choice.kind)));
        if (row.path->isModified() && !row.path->text().isEmpty())
            continue; // typed and not taken: it is there to be corrected
        row.path->setText(choice.path);
        row.path->setToolTip(row.path->text());
    }
    refreshPrompts();
}

void SourcePanel::refreshPrompts()
{
    for (int i = 0; i < m_prompts.size(); ++i)
        m_prompts[i]->setChecked(m_sound->promptSounds(promptKeys[i].prompt));
    m_status->setText(tr("Output: %1").arg(m_sound->status()));
}

void SourcePanel::say(const QString& error)
{
    m_error->setText(error.isEmpty() ? sourceComplaints(*m_sound).join(QLatin1Char('\n')) : error);
}

void SourcePanel::setKind(int row, SourceKind kind, const QString& path)
{
    // The next run may start in another folder.
    const SourceChoice choice{kind, path.isEmpty() ? path : QFileInfo(path).absoluteFilePath()};
    QString error;
    QLineEdit* const field = m_rows[row].path;
    if (m_sound->setSource(m_rows[row].id, choice, &error)) {
        error.clear();
        keepSource(m_rows[row].id, choice);
        field->setModified(false);
    } else if (kind == SourceKind::File) {
        field->setText(path);
        field->setToolTip(path);
        field->setModified(true);
    }
    say(error);
    refresh();
}

void SourcePanel::onKindChosen(int row, SourceKind kind)
{
    if (kind == SourceKind::File)
        askForFile(row);
    else
        setKind(row, kind, QString());
}

void SourcePanel::onPathEntered(int row)
{
    const QString path = m_rows[row].path->text();
    if (path.isEmpty())
        refresh(); // back to what plays
    else
        setKind(row, SourceKind::File, path);
}

void SourcePanel::askForFile(int row)
{
    auto* dialog = newFileDialog(this, tr("What plays as %1").arg(m_rows[row].name->text()));
    dialog->setFileMode(QFileDialog::ExistingFile);
    dialog->setNameFilters(
        {tr("Sound files (*.wav *.flac *.ogg *.oga *.mp3 *.aiff *.aif)"), tr("All files (*)")});
    const QString before = m_sound->source(m_rows[row].id).path;
    if (!before.isEmpty())
        dialog->selectFile(before);
    connect(dialog, &QFileDialog::fileSelected, this,
            [this, row](const QString& path) { setKind(row, SourceKind::File, path); });
    // "File" without a file: back to what plays.
    connect(dialog, &QFileDialog::rejected, this, &SourcePanel::refresh);
    dialog->open();
}

void SourcePanel::onPromptTouched(int key)
{
    const PromptKey& row = promptKeys[key];
    if (m_sound->promptSounds(row.prompt))
        m_sound->endPrompt(row.prompt);
    else
        m_sound->prompt(row.prompt, row.repeated);
    refreshPrompts();
}

void SourcePanel::showEvent(QShowEvent* event)
{
    // What was refused is still there, and so is why.
    if (std::none_of(m_rows.cbegin(), m_rows.cend(), [](const Row& row) { return row.path->isModified(); }))
        say(QString());
    refresh();
    m_poll.start();
    QWidget::showEvent(event);
}

void SourcePanel::hideEvent(QHideEvent* event)
{
    m_poll.stop();
    QWidget::hideEvent(event);
}

} // namespace headunit
