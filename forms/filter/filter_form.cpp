#include "forms/filter/filter_form.h"

#include <QLineEdit>

#include "app/shared/run_time_error.h"
#include "toolkit/accessible.h"
#include "toolkit/fonts.h"

namespace forms {
namespace {

// Positions in the lists.
constexpr int kYear1999 = 1999 - kFirstYear;
constexpr int kTwelve = 12, kThirty = 30;

constexpr double kHeadingSize = 1.4;  // times the size of the other texts
constexpr int kRowsOfList = 12;
constexpr int kCharactersOfNumber = 32;

void FillWithNumbers(QComboBox& list, int first, int last) {
    for (int number = first; number <= last; ++number)
        list.addItem(QStringLiteral("%1").arg(number, 2, 10, QChar(u'0')));
}

}  // namespace

Form3::Form3(const FilterHost& main) : OwnedDialog(main.window), main_(main) {
    setupUi(this);
    toolkit::MakeHeading(*Label2, kHeadingSize);
    for (QComboBox* list : {år, månad, dag, timme, minut}) list->setMaxVisibleItems(kRowsOfList);
    bytes->setCompleter(nullptr);  // a number that begins like one of the list is not that one
    bytes->lineEdit()->setMaxLength(kCharactersOfNumber);
    FillLists();
    toolkit::NameInnerParts(*this);
    Wire();
    adjustSize();
}

// What the user chooses ticks the box of its row; what the program selects does not.
void Form3::Wire() {
    connect(Command1, &QPushButton::clicked, this, &Form3::Command1_Click);
    connect(Command2, &QPushButton::clicked, this, &Form3::Command2_Click);
    const auto tick_size = [this] { Check2->setChecked(true); };
    const auto tick_time = [this] { Check1->setChecked(true); };
    for (const QComboBox* list : {storlek, bytes, typ}) connect(list, &QComboBox::activated, this, tick_size);
    connect(bytes->lineEdit(), &QLineEdit::textEdited, this, tick_size);
    for (const QComboBox* list : {när, år, månad, dag, timme, minut})
        connect(list, &QComboBox::activated, this, tick_time);
}

void Form3::Form_Load() {
    SelectDefaults();
    RestoreFilter();
    OpenOverOwner();
}

void Form3::FillLists() {
    for (const int number : {1, 5, 10, 50, 100, 250, 500, 750}) bytes->addItem(QString::number(number));
    storlek->addItems({QStringLiteral("Större än"), QStringLiteral("Mindre än")});
    när->addItems({QStringLiteral("Senare än"), QStringLiteral("Tidigare än")});
    typ->addItems(
        {QStringLiteral("Bytes"), QStringLiteral("KB"), QStringLiteral("MB"), QStringLiteral("GB")});
    FillWithNumbers(*år, kFirstYear, kLastYear);
    FillWithNumbers(*månad, 1, 12);
    FillWithNumbers(*dag, 1, 31);
    FillWithNumbers(*timme, 0, 23);
    FillWithNumbers(*minut, 0, 59);
}

void Form3::SelectDefaults() {
    for (QComboBox* list : {bytes, storlek, när, typ, månad, dag}) list->setCurrentIndex(0);
    år->setCurrentIndex(kYear1999);
    timme->setCurrentIndex(kTwelve);
    minut->setCurrentIndex(kThirty);
    Check1->setChecked(false);
    Check2->setChecked(false);
}

void Form3::RestoreFilter() {
    if (const auto stored = StoredSize(app::Globals())) {
        Check2->setChecked(true);
        storlek->setCurrentIndex(static_cast<int>(stored->relation));
        // The entry itself where the list has it: otherwise the field would choose it, and tick the box,
        // when it loses the focus.
        bytes->setCurrentIndex(bytes->findText(stored->bytes));
        bytes->setEditText(stored->bytes);
    }
    if (const auto stored = StoredTime(app::Globals())) {
        Check1->setChecked(true);
        när->setCurrentIndex(static_cast<int>(stored->relation));
        månad->setCurrentIndex(stored->month);
        dag->setCurrentIndex(stored->day);
        år->setCurrentIndex(stored->year);
        timme->setCurrentIndex(stored->hour);
        minut->setCurrentIndex(stored->minute);
    }
}

void Form3::Command1_Click() {
    StoreFilter();
    const app::ftpglob& filter = app::Globals();
    main_.SetFilterCaption(FilterCaption(
        filter.FilterMode,
        {bytes->currentText(), typ->currentText(), filter.FilterTime.date(), filter.FilterTimeValue}));
    accept();
}

// A step that fails leaves what the steps before it have stored.
void Form3::StoreFilter() {
    app::Globals().FilterMode = 0;
    if (Check1->isChecked()) StoreTime();
    if (Check2->isChecked()) StoreSize();
    app::Globals().FilterMode = FilterModeOf(Relations());
}

void Form3::StoreTime() {
    app::ftpglob& filter = app::Globals();
    const auto date =
        ParseMonthDayYear(månad->currentText() + u',' + dag->currentText() + u',' + år->currentText());
    if (!date) throw app::TypeMismatch();
    filter.FilterTime = date->startOfDay();
    filter.FilterTimeValue = timme->currentText() + u':' + minut->currentText() + QStringLiteral(":00");
    filter.FilterMode = FilterModeOf({.size = {}, .time = Relations().time});
}

void Form3::StoreSize() {
    const auto threshold = SizeThreshold(bytes->currentText(), typ->currentIndex());
    if (!threshold) throw app::Overflow();
    app::Globals().FilterSizeBytes = *threshold;
}

FilterRelations Form3::Relations() const {
    FilterRelations ticked;
    if (Check2->isChecked()) ticked.size = static_cast<SizeRelation>(storlek->currentIndex());
    if (Check1->isChecked()) ticked.time = static_cast<TimeRelation>(när->currentIndex());
    return ticked;
}

void Form3::Command2_Click() {
    reject();
}

}  // namespace forms
