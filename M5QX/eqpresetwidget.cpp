#include "M5QX/eqpresetwidget.h"

#include "M5QX/diagnostic.h"
#include "M5QX/filelocal.h"
#include "ui_eqpresetwidget.h"

#include "common/translator.h"
#include "hvaudio/audioservice.h"

#include <QButtonGroup>

namespace {

struct Tile
{
    QPushButton* Ui_EQPresetWidget::*key;
    QLabel* Ui_EQPresetWidget::*label;
    int textId;
    AudioEQType type;
};

using Form = Ui_EQPresetWidget;

// A tile's place in the table is its group id. The first six run against the service's order, from jazz down
// to flat.
// clang-format off
constexpr Tile tiles[] = {
    {&Form::key_jazz,   &Form::label_jazz,   246,  EQ_Type_Jazz},
    {&Form::key_hiphop, &Form::label_hiphop, 240,  EQ_Type_HipHop},
    {&Form::key_pop,    &Form::label_pop,    238,  EQ_Type_Pop},
    {&Form::key_rock,   &Form::label_rock,   239,  EQ_Type_Rock},
    {&Form::key_rb,     &Form::label_rb,     237,  EQ_Type_RB},
    {&Form::key_flat,   &Form::label_flat,   1226, EQ_Type_Flat},
    {&Form::key_user1,  &Form::label_user1,  1258, EQ_Type_User1},
    {&Form::key_user2,  &Form::label_user2,  1259, EQ_Type_User2},
};
// clang-format on
constexpr int TileCount = sizeof(tiles) / sizeof(tiles[0]);
static_assert(TileCount == 8, "one tile a preset");

} // namespace

EQPresetWidget::EQPresetWidget(QWidget* parent)
    : QWidget(parent)
    , ui(new Ui_EQPresetWidget)
    , m_group(nullptr)
{
    ui->setupUi(this);
    init();
}

EQPresetWidget::~EQPresetWidget()
{
    delete ui;
}

void EQPresetWidget::init()
{
    ui->key_exit->hide();
    for (const Tile& tile : tiles)
        (ui->*tile.label)->setAttribute(Qt::WA_TransparentForMouseEvents);
    retranslateUi();
    m_group = new QButtonGroup(this);
    for (int id = 0; id < TileCount; ++id)
        m_group->addButton(ui->*tiles[id].key, id);
    connect(m_group, SIGNAL(buttonClicked(int)), this, SLOT(onButtonGroupClicked(int)));
}

void EQPresetWidget::retranslateUi()
{
    const QString title = Translator::translate(1227);
    ui->label_title->setText(title);
    ui->key_back->setAccessibleName(title);
    ui->key_exit->setAccessibleName(title + QStringLiteral(" X"));
    for (const Tile& tile : tiles) {
        const QString name = Translator::translate(tile.textId).toUpper();
        (ui->*tile.label)->setText(name);
        (ui->*tile.key)->setAccessibleName(name);
    }
}

void EQPresetWidget::resume()
{
    const AudioEQType type = hvaudio::AudioService::instance()->getCurrEQType();
    for (const Tile& tile : tiles) {
        if (tile.type == type)
            (ui->*tile.key)->setChecked(true);
    }
}

void EQPresetWidget::onButtonGroupClicked(int id)
{
    AS_DEBUG() << "id:" << id;
    if (id < 0 || id >= TileCount)
        return;
    hvaudio::AudioService::instance()->setEQType(tiles[id].type, true);
}

void EQPresetWidget::on_key_exit_clicked()
{
    AS_DEBUG();
    hvaudio::AudioService::instance()->doBeep(0);
    emit exitUI();
}
