#pragma once

#include "ModelFixture.h"
#include "QtPrinters.h"

#include "stores/PreferencesStore.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <gtest/gtest.h>

// Writes a file as a user or an earlier run would have left it, folders and all.
inline void writeTestFile(const QString &path, const QByteArray &bytes)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly)) << path.toStdString();
    file.write(bytes);
}

// The model over the fakes, with its preferences file at hand.
class ModelTest : public ::testing::Test
{
protected:
    void writePreferences(const QByteArray &json) { writeTestFile(fixture.preferencesPath(), json); }
    [[nodiscard]] PreferencesStore stored() const { return PreferencesStore(fixture.preferencesPath()); }

    ModelFixture fixture;
};
