// extraction.cpp - see extraction.h.

#include "extraction.h"

#include "exit_code.h"
#include "fault_text.h"
#include "host_name.h"
#include "item_target.h"
#include "json_list.h"
#include "listed_set.h"
#include "screen_text.h"
#include "stream_decoding.h"

#include "ce/file.h"

#include <algorithm>
#include <cstdio>
#include <iostream>
#include <optional>

namespace quillbox_set {

namespace {

struct WrittenItem {
    HANDLE file;
    std::uint64_t bytes = 0;
    DWORD error = ERROR_SUCCESS;
};

BOOL writeRaw(const BYTE* raw, DWORD bytes, void* context)
{
    auto& item = *static_cast<WrittenItem*>(context);
    DWORD written = 0;
    if (!WriteFile(item.file, raw, bytes, &written, nullptr))
        item.error = GetLastError();
    item.bytes += written;
    return item.error == ERROR_SUCCESS && written == bytes;
}

// Each folder above the last part. One that exists is no failure: the open decides.
void makeFoldersOf(const std::u16string& path)
{
    for (std::size_t end = path.find(u'\\', 1); end != std::u16string::npos; end = path.find(u'\\', end + 1))
        (void)CreateDirectoryW(path.substr(0, end).c_str(), nullptr);
}

OpenFile openTarget(const std::u16string& path, DWORD creation)
{
    OpenFile target(path, GENERIC_WRITE, creation);
    if (target.isOpen() || GetLastError() != ERROR_PATH_NOT_FOUND)
        return target;
    makeFoldersOf(path);
    return {path, GENERIC_WRITE, creation};
}

class Extraction {
public:
    Extraction(ListedSet& set, const MountedSet& files, const ExtractionOptions& options)
        : set_(set), files_(files), options_(options), data_(files.dataPath, GENERIC_READ, OPEN_EXISTING)
    {
        for (const std::string& name : options.names)
            wanted_.push_back({devicePath(name), false});
        if (options.json)
            list_.emplace(nlohmann::ordered_json::object(), "items");
    }

    int run()
    {
        if (!data_.isOpen()) {
            std::cerr << "quillbox-set: the data file is missing or can't be opened\n";
            faults_++;
        }
        Item item;
        while (data_.isOpen() && set_.next(item)) {
            if (isWanted(item))
                extract(item);
        }
        if (set_.readFailed()) {
            std::cerr << "quillbox-set: the list file couldn't be read to its end\n";
            faults_++;
        }
        tellUnknownNames();
        if (list_)
            list_->end({{"written", written_}, {"faults", faults_}});
        else
            std::printf("%s written, %s.\n", counted(written_, "item").c_str(), counted(faults_, "fault").c_str());
        return faults_ == 0 ? exitGood : exitFaults;
    }

private:
    struct Wanted {
        std::u16string pattern;
        bool found;
    };

    // A slash is easier to type in a shell, and no name holds one.
    static std::u16string devicePath(const std::string& name)
    {
        std::u16string path = platform::text::fromUtf8(name);
        std::ranges::replace(path, u'/', u'\\');
        return path;
    }

    bool isWanted(const Item& item)
    {
        bool any = wanted_.empty();
        for (Wanted& wanted : wanted_) {
            if (matches(wanted.pattern, askedName(item)))
                any = wanted.found = true;
        }
        return any;
    }

    void extract(const Item& item)
    {
        std::uint64_t bytes = 0;
        const std::string fault = tryToExtract(item, bytes);
        (fault.empty() ? written_ : faults_)++;
        if (list_) {
            list_->add({{"kind", item.kindText()},
                        {"name", platform::text::toUtf8(askedName(item))},
                        {"target", platform::text::toUtf8(targetOf(item))},
                        {"bytes", bytes},
                        {"fault", fault.empty() ? nlohmann::ordered_json(nullptr) : nlohmann::ordered_json(fault)}});
        } else {
            std::printf("%-8s %s: %s\n", item.kindText().c_str(), onScreen(askedName(item)).c_str(),
                        (fault.empty() ? counted(bytes, "byte") : fault).c_str());
        }
    }

    // What hindered it; nothing if all of it was written.
    std::string tryToExtract(const Item& item, std::uint64_t& bytes)
    {
        const std::u16string target = targetOf(item);
        if (item.entry.faults & CutByEndOfFile)
            return "the list file ends inside it";
        if (!NameIsUsable(item.entry))
            return listFaultTexts(item.entry.faults, "its name").front();
        if (!item.isFile() && !item.isDatabase() && !item.isRegistry())
            return "there is no such kind";
        if (leadsInto(target, files_.folder))
            return errorText(ERROR_INVALID_NAME);
        // What is replaced was good perhaps: so look first.
        if (options_.force && !options_.keepDamaged) {
            if (const StreamFault fault = decode(item, nullptr, nullptr); fault != StreamFault::None)
                return streamFaultText(fault);
        }
        return writeTo(target, item, bytes);
    }

    std::string writeTo(const std::u16string& path, const Item& item, std::uint64_t& bytes)
    {
        OpenFile target = openTarget(path, options_.force ? CREATE_ALWAYS : CREATE_NEW);
        if (!target.isOpen())
            return errorText(GetLastError());
        WrittenItem written = {target.handle()};
        const StreamFault fault = decode(item, writeRaw, &written);
        target.close();
        bytes = written.bytes;
        if (fault == StreamFault::None)
            return "";
        const bool kept = options_.keepDamaged && fault != StreamFault::StoppedBySink;
        if (!kept)
            (void)DeleteFileW(path.c_str());
        const std::string reason =
            fault == StreamFault::StoppedBySink ? errorText(written.error) : streamFaultText(fault);
        return kept ? reason + "; " + counted(bytes, "byte") + " before that kept" : reason;
    }

    StreamFault decode(const Item& item, RawBytesSink sink, void* context) const
    {
        return DecodeStream(data_.handle(), item.entry.startOffset, item.entry.endOffset, sink, context);
    }

    void tellUnknownNames()
    {
        for (const Wanted& wanted : wanted_) {
            if (wanted.found)
                continue;
            faults_++;
            std::cerr << "quillbox-set: the set has no item " << onScreen(wanted.pattern) << "\n";
        }
    }

    ListedSet& set_;
    const MountedSet& files_;
    const ExtractionOptions& options_;
    OpenFile data_;
    std::vector<Wanted> wanted_;
    std::optional<JsonList> list_;
    std::uint64_t written_ = 0;
    std::uint64_t faults_ = 0;
};

}  // namespace

int extractItems(const MountedSet& set, const ExtractionOptions& options)
{
    ListedSet list(set);
    if (!list.isOpen()) {
        std::cerr << "quillbox-set: the list file can't be opened\n";
        return exitNoSet;
    }
    return Extraction(list, set, options).run();
}

}  // namespace quillbox_set
