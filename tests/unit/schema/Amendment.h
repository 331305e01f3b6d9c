// A file of the schema's texts in another language, or of their removal.
#pragma once

#include "Common/src/com/Text.h"
#include "standin/mof/MofClass.h"

#include <cstring>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <map>

// UTF-16, which the management service's compiler knows by its first two bytes.
inline std::string ReadUtf16(const std::string& file)
{
    std::ifstream in(std::filesystem::path(ZEB_BIN_DIR) / file, std::ios::binary);
    const std::string bytes(std::istreambuf_iterator<char>(in), {});
    EXPECT_TRUE(bytes.starts_with("\xFF\xFE")) << file;
    std::wstring text(bytes.size() / 2, L'\0');
    std::memcpy(text.data(), bytes.data(), text.size() * 2);
    return Utf8Text(text.substr(text.empty() ? 0 : 1));
}

// Its syntax is read as the stand-in reads a schema; what is wrong with it fails the test.
struct CAmendment
{
    explicit CAmendment(const std::string& file)
    {
        const std::string text = ReadUtf16(file);
        standin::CMofReader reader(text);
        try
        {
            while (reader.Kind() != standin::CMofReader::End)
                Read(reader);
        }
        catch (const standin::CMofProblem& problem)
        {
            ADD_FAILURE() << file << "(" << problem.Place.Line << "," << problem.Place.Column
                          << "): " << problem.Reason;
        }
    }

    std::wstring Namespace;
    std::wstring MadeNamespace; // by its whole name
    std::map<std::wstring, standin::ClassDefinition> Classes;
    std::vector<std::wstring> Removed;

  private:
    void Read(standin::CMofReader& reader)
    {
        if (reader.Take('#'))
            return ReadDirective(reader);
        const standin::CQualifiers qualifiers = standin::ReadQualifiers(reader);
        if (reader.TakeWord("instance"))
        {
            for (const char* word : {"of", "__Namespace"})
                reader.ExpectWord(word);
            reader.Expect('{');
            reader.ExpectWord("Name");
            reader.Expect('=');
            MadeNamespace = Namespace + L'\\' + reader.TakeTexts();
            for (const char mark : {';', '}', ';'})
                reader.Expect(mark);
            return;
        }
        reader.ExpectWord("class");
        const standin::CMofPlace place = reader.Place();
        const standin::ClassDefinition read =
            standin::ReadClass(reader, qualifiers,
                               [](const standin::CMofName& base) -> standin::ClassDefinition {
                                   throw standin::CMofProblem{base.Place, "an amendment has no superclass"};
                               });
        if (!Classes.emplace(read->Name, read).second)
            throw standin::CMofProblem{place, "the class is there twice"};
    }

    void ReadDirective(standin::CMofReader& reader)
    {
        reader.ExpectWord("pragma");
        if (reader.TakeWord("autorecover"))
            return;
        const bool removes = reader.TakeWord("deleteclass");
        if (!removes)
            reader.ExpectWord("namespace");
        reader.Expect('(');
        const std::wstring name = reader.TakeTexts();
        if (removes)
        {
            reader.Expect(',');
            reader.ExpectWord("nofail");
            Removed.push_back(name);
        }
        else
            Namespace = name;
        reader.Expect(')');
    }
};
