#include "settings/settings_file.h"

#include <gtest/gtest.h>

#include <random>

#include "tests/settings/settings_text.h"

namespace settings {
namespace {

TEST(SettingsFile, IsReadable) {
    const Sections sections = {{"general", {{"antal", "1"}, {"visa", ""}}}, {"0", {{"host", "ftp.å.se"}}}};
    EXPECT_EQ(Serialise(sections), "# websmide 2\n[0]\nhost=ftp.å.se\n[general]\nantal=1\nvisa=\n# end\n");
    EXPECT_EQ(Serialise({}), "# websmide 2\n# end\n");
}

TEST(SettingsFile, Understands) {
    struct Row {
        QByteArray bytes;
        Sections sections;
    };
    const Row rows[] = {
        {"# websmide 2\n# end", {}},
        {"# websmide 2\n[a]\nk=v\n# end\n", {{"a", {{"k", "v"}}}}},
        {"\xEF\xBB\xBF\r\n# websmide 2\r\n\r\n[a]\r\nk=v\r\n\r\n# end\r\n\r\n", {{"a", {{"k", "v"}}}}},
        {"# websmide 2\n[a]\nk=v\n# end\n\nl=w\n[b]\n", {{"a", {{"k", "v"}, {"l", "w"}}}, {"b", {}}}},
        {"# websmide 2\n[a]\n# end=1\n# websmide 2=3\n# end\n",
         {{"a", {{"# end", "1"}, {"# websmide 2", "3"}}}}},
        // with neither of the two
        {"[a]", {{"a", {}}}},
        {"[a]\nk=v", {{"a", {{"k", "v"}}}}},
        {"\xEF\xBB\xBF[a]\r\nk=v\r\n\r\n", {{"a", {{"k", "v"}}}}},
        {"[a]\nk= v ", {{"a", {{"k", " v "}}}}},
        {"[a]\nk=a=b", {{"a", {{"k", "a=b"}}}}},
        {"[a]\nk=[b]", {{"a", {{"k", "[b]"}}}}},
        {"[a]\nk=", {{"a", {{"k", ""}}}}},
        {"[]\n=", {{"", {{"", ""}}}}},
        {"[a]b]", {{"a]b", {}}}},
        {"[a]\nk=1\n[b]\nk=2\n[a]\nk=3\nl=4", {{"a", {{"k", "3"}, {"l", "4"}}}, {"b", {{"k", "2"}}}}},
        {"[a]\nk=C:\\\\Webb\\u000a\\u005Bx", {{"a", {{"k", "C:\\Webb\n[x"}}}}},
        {"[a]\n# k=v", {{"a", {{"# k", "v"}}}}},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(Parse(row.bytes), row.sections) << row.bytes.toStdString();
    }
}

TEST(SettingsFile, RefusesGarbage) {
    const QByteArray rows[] = {
        "",
        "\n\n",
        "\xEF\xBB\xBF",
        "# websmide 2\n",
        "# websmide 2\n[a]\nk=v\n",
        "# websmide 2\n[a]\nk=v\n# end\n# end\n",
        "# websmide 2\n# websmide 2\n[a]\nk=v\n# end\n",
        "# websmide 3\n[a]\nk=v\n# end\n",
        " # websmide 2\n[a]\nk=v\n# end\n",
        "[a]\nk=v\n# end\n",
        "[a]\n# websmide 2\nk=v\n# end\n",
        QByteArray("# websmide 2\n[a]\nk=v\n# end\n\0\0", 30),
        QByteArray("[a]\nk=v\0\n", 9),
        QByteArray(100, '\0'),
        "[a]\nk=v\x01\n",
        "[a]\nk=\tv\n",
        "[a]\nk=a\rb\n",
        "[a]\nk=v\r\r\n",
        "[a]\nk=\xC2\x85\n",
        "[a]\nk=\xE5\n",
        "[a]\nk=\xC3",
        "[a]\nk=\xED\xA0\x80\n",
        "k=v\n",
        "=",
        "[a]\nk\n",
        "[a\nk=v\n",
        "[a\n",
        "[\n",
        "a]\n",
        "[a] \n",
        " \n",
        "[a]\nk=\\\n",
        "[a]\nk=\\n\n",
        "[a]\nk=\\u\n",
        "[a]\nk=\\u00\n",
        "[a]\nk=\\u00g0\n",
        "[a]\nk=\\u+041\n",
        "[a]\nk=\\u 041\n",
        "[a]\n\\=v\n",
        "[\\]\nk=v\n",
        "\xFF\xFE[\0a",
        "\x7F"
        "ELF",
        "<?xml version=\"1.0\"?>\n",
    };
    for (const QByteArray& row : rows) {
        EXPECT_EQ(Parse(row), std::nullopt) << row.toPercentEncoding().toStdString();
    }
}

TEST(SettingsFile, RefusesAFileThatHasLostItsEnd) {
    const Sections sections = {
        {"general", {{"antal", "2"}}},
        {"0", {{"host", "ftp.exempel.se"}, {"pass", " hemligt\n"}, {"namn", "Åsas sida"}, {"user", ""}}},
        {"1", {{"host", "[::1]:21"}, {"pass", "a=b\\"}, {"namn", "🐟"}}},
        {"# end", {{"# end", "# end"}}},
        {"", {{"", ""}}},
    };
    const QByteArray whole = Serialise(sections);
    for (qsizetype length = 0; length < whole.size() - 1; ++length) {
        EXPECT_EQ(Parse(whole.first(length)), std::nullopt) << whole.first(length).toStdString();
    }
    EXPECT_EQ(Parse(whole.chopped(1)), sections) << "nothing is lost with the last line's end";
}

TEST(SettingsFile, HasALargestSize) {
    const QByteArray head = "[a]\nk=";
    EXPECT_TRUE(Parse(head + QByteArray(kMaxFileSize - head.size(), 'x')));
    EXPECT_FALSE(Parse(head + QByteArray(kMaxFileSize - head.size() + 1, 'x')));
}

TEST(SettingsFile, EscapesWhatAnEditorWouldSpoil) {
    struct Row {
        QString value;
        QByteArray line;
    };
    const Row rows[] = {
        {"C:\\Webb", "k=C:\\\\Webb"},
        {" a b ", "k=\\u0020a b\\u0020"},
        {"  ", "k=\\u0020\\u0020"},
        {" ", "k=\\u0020"},
        {"a\r\nb\tc", "k=a\\u000d\\u000ab\\u0009c"},
        {QString(QChar(0)), "k=\\u0000"},
        {QString(QChar(0x85)), "k=\\u0085"},
        {QString(QChar(0xA0)) + "x", "k=\\u00a0x"},
        {QString(QChar(0xD800)), "k=\\ud800"},
        {QString(QChar(0xDC00)) + QChar(0xD800), "k=\\udc00\\ud800"},
        {"🐟", "k=🐟"},
        {"[x]=y", "k=[x]=y"},
    };
    for (const Row& row : rows) {
        const Sections sections = {{"s", {{"k", row.value}}}};
        EXPECT_EQ(Serialise(sections), WholeFile("[s]\n" + row.line + '\n'));
        EXPECT_EQ(Parse(Serialise(sections)), sections) << row.line.toStdString();
    }
    const Sections keys = {{"a]\nb", {{"[k]", "1"}, {"a=b", "2"}, {" ", "3"}, {"", "4"}, {"# end", "5"}}}};
    EXPECT_EQ(Serialise(keys),
              WholeFile("[a]\\u000ab]\n=4\n\\u0020=3\n\\u0023 end=5\n\\u005bk]=1\na\\u003db=2\n"));
    EXPECT_EQ(Parse(Serialise(keys)), keys);
}

QString RandomText(std::mt19937& random) {
    static const QString likely = QStringLiteral("ab=[]\\u0# \n\r\t;\"'åÖ");
    QString text;
    for (unsigned length = random() % 8; length > 0; --length) {
        text += random() % 3 ? likely[static_cast<int>(random() % static_cast<unsigned>(likely.size()))]
                             : QChar(static_cast<char16_t>(random()));
    }
    return text;
}

TEST(SettingsFile, BringsAnyTextBack) {
    std::mt19937 random(21);
    for (int round = 0; round < 5'000; ++round) {
        Sections sections;
        for (unsigned keys = random() % 6; keys > 0; --keys) {
            sections[RandomText(random)][RandomText(random)] = RandomText(random);
        }
        const QByteArray bytes = Serialise(sections);
        ASSERT_EQ(Parse(bytes), sections) << bytes.toStdString();
    }
}

TEST(SettingsFile, SurvivesAnyBytes) {
    std::mt19937 random(22);
    const QByteArray good = "[general]\nantal=2\n[0]\nhost=ftp.\xC3\xA5.se\nuser=\\u0020a\\\\\n";
    int understood = 0;
    for (int round = 0; round < 5'000; ++round) {
        QByteArray bytes = good;
        for (unsigned changes = 1 + random() % 3; changes > 0; --changes) {
            bytes[static_cast<qsizetype>(random() % static_cast<unsigned>(bytes.size()))] =
                static_cast<char>(random());
        }
        if (const auto sections = Parse(bytes)) {
            ++understood;
            ASSERT_EQ(Parse(Serialise(*sections)), sections);
        }
    }
    EXPECT_GT(understood, 0);
    EXPECT_LT(understood, 5'000);
}

TEST(SettingsFile, HasASafeNameOfItsApplication) {
    struct Row {
        QString application;
        QByteArray name;
    };
    const Row rows[] = {
        {"Websmide", "Websmide.conf"},
        {"Websmide's FTP program", "Websmide's FTP program.conf"},
        {"Websmide's FTP program, fönster", "Websmide's FTP program, fönster.conf"},
        {"../../etc/passwd", "%2E.%2F..%2Fetc%2Fpasswd.conf"},
        {"a/b\\c%2F", "a%2Fb%5Cc%252F.conf"},
        {QStringLiteral("a\n") + QChar(0), "a%0A%00.conf"},
        {".dold", "%2Edold.conf"},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(FileName(row.application), row.name);
    }
}

}  // namespace
}  // namespace settings
