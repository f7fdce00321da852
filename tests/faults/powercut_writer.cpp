// A unit that writes settings, for the simulator to look at each of its operations on files:
// powercut_writer PATH first-step last-step

#include "platform/common/settings/settingsstore.h"
#include "tests/faults/powercutsteps.h"

#include <QCoreApplication>

#include <algorithm>
#include <iterator>

// The recorder's, when it is there.
extern "C" void recordMark(int number) __attribute__((weak));

namespace {

void mark(int number)
{
    if (recordMark)
        recordMark(number);
}

bool makeStep(mem::SettingsStore* store, int step)
{
    if (step == powercut::wipingStep) {
        store->clear();
        return store->isDurable();
    }
    const auto wanted = powercut::settingsAfter(step);
    const auto present = store->values();
    for (auto value = wanted.begin(); value != wanted.end(); ++value) {
        if (present.value(value.key()) != *value)
            store->setValue(value.key(), *value, false);
    }
    for (auto value = present.begin(); value != present.end(); ++value) {
        if (!wanted.contains(value.key()))
            store->remove(value.key());
    }
    return store->commit();
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    const QString path = application.arguments().at(1);
    mem::SettingsStore* const store = mem::SettingsStore::instance();
    if (store->open(path) != mem::SettingsStore::Opened::Durable)
        return 1;
    for (int step = application.arguments().at(2).toInt(); step <= application.arguments().at(3).toInt();
         ++step) {
        if (std::count(std::begin(powercut::reopeningSteps), std::end(powercut::reopeningSteps), step) > 0) {
            store->close();
            if (store->open(path) != mem::SettingsStore::Opened::Durable || !store->keepGoodCopy())
                return 2;
        }
        mark(powercut::begun(step));
        if (!makeStep(store, step))
            return 3;
        mark(powercut::done(step));
    }
    store->close();
    return 0;
}
