#include "M5QX/eqpresetwidget.h"

#include "M5QX/diagnostic.h"
#include "common/translator.h"
#include "hvaudio/eqcurves.h"
#include "ui_eqpresetwidget.h"

#include <QButtonGroup>

namespace {

struct Tile
{
    QPushButton* Ui_EQPresetWidget::*key;
    QLabel* Ui_EQPresetWidget::*label;
    AudioEQType type;
};

using Form = Ui_EQPresetWidget;

// A tile's place in the table is its group id. The first six run against the service's order, from jazz down
// to flat.
// clang-format off
constexpr Tile tiles[] = {
    {&Form::key_jazz,   &Form::label_jazz,   EQ_Type_Jazz},
    {&Form::key_hiphop, &Form::label_hiphop, EQ_Type_HipHop},
    {&Form::key_pop,    &Form::label_pop,    EQ_Type_Pop},
    {&Form::key_rock,   &Form::label_rock,   EQ_Type_Rock},
    {&Form::key_rb,     &Form::label_rb,     EQ_Type_RB},
    {&Form::key_flat,   &Form::label_flat,   EQ_Type_Flat},
    {&Form::key_user1,  &Form::label_user1,  EQ_Type_User1},
    {&Form::key_user2,  &Form::label_user2,  EQ_Type_User2},
};
// clang-format on
constexpr int tileCount = std::size(tiles);
static_assert(tileCount == 8, "one tile a preset");

} // namespace

EQPresetWidget::EQPresetWidget(QWidget* parent)
    : QWidget(parent)
    , ui(new Ui_EQPresetWidget)
    , m_group(nullptr)
{
    ui->setupUi(this);
    init();
}

EQPresetWidget::~EQPresetWidget() = default;

void EQPresetWidget::init()
{
    ui->key_exit->hide();
    for (const Tile& tile : tiles)
        (ui.data()->*tile.label)->setAttribute(Qt::WA_TransparentForMouseEvents);
    retranslateUi();
    m_group = new QButtonGroup(this);
    for (int id = 0; id < tileCount; ++id)
        m_group->addButton(ui.data()->*tiles[id].key, id);
    connect(m_group, SIGNAL(buttonClicked(int)), this, SLOT(onButtonGroupClicked(int)));
}

void EQPresetWidget::retranslateUi()
{
    const QString title = Translator::translate(1227);
    ui->label_title->setText(title);
    ui->key_back->setAccessibleName(title);
    ui->key_exit->setAccessibleName(title + QStringLiteral(" X"));
    for (const Tile& tile : tiles) {
        const QString name = Translator::translate(hvaudio::eqCurveOf(tile.type).nameId).toUpper();
        (ui.data()->*tile.label)->setText(name);
        (ui.data()->*tile.key)->setAccessibleName(name);
    }
}

void EQPresetWidget::resume()
{
    const AudioEQType type = hvaudio::AudioService::instance()->getCurrEQType();
    for (const Tile& tile : tiles) {
        if (tile.type == type)
            (ui.data()->*tile.key)->setChecked(true);
    }
}

void EQPresetWidget::onButtonGroupClicked(int id)
{
    AS_DEBUG() << "id:" << id;
    if (id < 0 || id >= tileCount)
        return;
    hvaudio::AudioService::instance()->setEQType(tiles[id].type, true);
}

void EQPresetWidget::on_key_exit_clicked()
{
    AS_DEBUG();
    hvaudio::AudioService::instance()->doBeep(0);
    emit exitUI();
}
