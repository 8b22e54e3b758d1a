#pragma once
// A component with a record of everything that it raises.

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QStringList>
#include <string>
#include <utility>
#include <vector>

#include "ftp/component.h"

namespace ftp {

class ComponentTest : public testing::Test {
 protected:
    ComponentTest() {
        Record(*component);
        component->ModeFlagA = component->ModeFlagB = true;
        component->UserName = component->Password = QStringLiteral("demo");
    }

    void Record(Component& source) {
        QObject::connect(&source, &Component::Debug, [this](const QString& line) { trace += line; });
        QObject::connect(&source, &Component::CommandSent, [this](const QString& line) { commands += line; });
        QObject::connect(&source, &Component::DirItem, [this](const QString& line) { listing += line; });
        QObject::connect(&source, &Component::Progress,
                         [this](std::int64_t bytes) { progress.push_back(bytes); });
        QObject::connect(&source, &Component::Error, [this](std::int32_t number, const QString& text) {
            errors.emplace_back(number, text.toStdString());
        });
        QObject::connect(&source, &Component::ConnectedChanged,
                         [this](bool now) { connected.push_back(now); });
        QObject::connect(&source, &Component::BusyChanged, [this](bool now) { busy.push_back(now); });
    }

    void Connect(const std::string& host_field) {
        component->HostName = QString::fromStdString(host_field);
        component->Connect();
    }

    /// The number of the only error so far; -1 when there was none or were several.
    std::int32_t OnlyError() const { return errors.size() == 1 ? errors.front().first : -1; }

    /// Calls back once, when a command with this beginning has left.
    template <class Action>
    void When(const QString& command, Action action) {
        QObject::connect(component.get(), &Component::CommandSent,
                         [command, action, done = false](const QString& line) mutable {
                             if (!done && line.startsWith(command)) {
                                 done = true;
                                 action();
                             }
                         });
    }

 private:
    int argc_ = 1;
    char name_[5] = "test";
    char* argv_[2] = {name_, nullptr};
    QCoreApplication application_{argc_, argv_};

 protected:
    std::unique_ptr<Component> component = std::make_unique<Component>();
    QStringList trace, commands, listing;
    std::vector<std::int64_t> progress;
    std::vector<std::pair<std::int32_t, std::string>> errors;
    std::vector<bool> connected, busy;
};

}  // namespace ftp
