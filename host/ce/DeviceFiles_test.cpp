#include "host/ce/DeviceFiles.h"

#include "host/ce/Error.h"
#include "host/ce/TemporaryFolder.h"

#include <filesystem>
#include <memory>
#include <sys/stat.h>
#include <thread>

#include <gtest/gtest.h>

namespace ce {
namespace {

namespace fs = std::filesystem;

// A device with a root, a profile folder and a card, each a folder of the host.
class Files : public ::testing::Test {
protected:
    Files() {
        for (const char* name : {"root", "profile", "card"})
            fs::create_directory(host / name);
        Mount();
    }

    // A new set of files on the same host folders, as after a restart.
    void Mount() {
        files = std::make_unique<DeviceFiles>();
        files->AddMount({u"\\", host / "root"});
        files->AddMount({u"\\Profile", host / "profile", ce::Mount::Writing::OnClose});
        files->AddMount({u"\\SDMMC Card", host / "card", ce::Mount::Writing::InPlace, true});
    }

    [[nodiscard]] HANDLE Create(const WCHAR* path) { return files->Open(path, GENERIC_WRITE, 0, CREATE_ALWAYS); }
    [[nodiscard]] HANDLE Open(const WCHAR* path, DWORD share = 0) {
        return files->Open(path, GENERIC_READ, share, OPEN_EXISTING);
    }
    bool Write(HANDLE handle, std::string_view content) {
        return files->Write(handle, content.data(), static_cast<DWORD>(content.size()), done);
    }
    bool Save(const WCHAR* path, std::string_view content) {
        const HANDLE handle = Create(path);
        const bool written = handle != INVALID_HANDLE_VALUE && Write(handle, content);
        return files->Close(handle) && written;
    }
    std::string Load(const WCHAR* path) {
        const HANDLE handle = Open(path);
        if (handle == INVALID_HANDLE_VALUE)
            return "error " + std::to_string(LastError());
        std::string content(1000, '?');
        EXPECT_TRUE(files->Read(handle, content.data(), 1000, done));
        content.resize(done);
        EXPECT_TRUE(files->Close(handle));
        return content;
    }

    TemporaryFolder host;
    std::unique_ptr<DeviceFiles> files;
    DWORD done = 0;
};

// ---- Reading and writing ----

TEST_F(Files, DevicePathsAreHostFolders) {
    EXPECT_TRUE(Save(u"\\MotBody.dat", "slide"));
    EXPECT_EQ(ContentOf(host / "root/MotBody.dat"), "slide");
    EXPECT_EQ(Load(u"\\MotBody.dat"), "slide");
}

TEST_F(Files, HangulNames) {
    EXPECT_TRUE(files->MakeFolder(u"\\SDMMC Card\\DMB\\"));
    EXPECT_TRUE(Save(u"\\SDMMC Card\\DMB\\방송_070307210509.dmb", "ts"));
    EXPECT_EQ(ContentOf(host / "card/DMB/방송_070307210509.dmb"), "ts");
    const auto list = files->List(u"\\SDMMC Card\\DMB");
    ASSERT_TRUE(list);
    ASSERT_EQ(list->size(), 1u);
    EXPECT_EQ((*list)[0].name, u"방송_070307210509.dmb");
    EXPECT_EQ((*list)[0].size, 2u);
}

TEST_F(Files, ReadingAtTheEndSucceedsWithNothing) {
    WriteContent(host / "root/a", "abc");
    const HANDLE handle = Open(u"\\a");
    char buffer[8];
    EXPECT_TRUE(files->Read(handle, buffer, 2, done));
    EXPECT_EQ(done, 2u);
    EXPECT_TRUE(files->Read(handle, buffer, 2, done)) << "a short last read";
    EXPECT_EQ(done, 1u);
    EXPECT_TRUE(files->Read(handle, buffer, 2, done));
    EXPECT_EQ(done, 0u);
    EXPECT_TRUE(files->Close(handle));
}

TEST_F(Files, SeekingAndSize) {
    const HANDLE handle = Create(u"\\SDMMC Card\\x");
    EXPECT_TRUE(Write(handle, "....word"));
    EXPECT_EQ(files->Seek(handle, 0, FILE_BEGIN), 0u);
    EXPECT_TRUE(Write(handle, "head"));
    EXPECT_EQ(files->Seek(handle, 0, FILE_CURRENT), 4u);
    EXPECT_EQ(files->Seek(handle, -1, FILE_END), 7u);
    EXPECT_FALSE(files->Seek(handle, -1, FILE_BEGIN));
    EXPECT_EQ(LastError(), ERROR_NEGATIVE_SEEK);
    EXPECT_EQ(files->Size(handle), 8u);
    EXPECT_TRUE(files->Close(handle));
    EXPECT_EQ(Load(u"\\SDMMC Card\\x"), "headword");
}

TEST_F(Files, CreatingEmptiesAndOpeningDoesNot) {
    EXPECT_TRUE(Save(u"\\a", "long content"));
    EXPECT_TRUE(Save(u"\\a", "new"));
    EXPECT_EQ(Load(u"\\a"), "new");
    const HANDLE handle = files->Open(u"\\a", GENERIC_READ | GENERIC_WRITE, 0, OPEN_EXISTING);
    EXPECT_TRUE(Write(handle, "N"));
    EXPECT_TRUE(files->Close(handle));
    EXPECT_EQ(Load(u"\\a"), "New");
}

TEST_F(Files, CapturesAreWrittenInPlace) {
    const HANDLE handle = Create(u"\\SDMMC Card\\capture.dmb");
    EXPECT_TRUE(Write(handle, "so far"));
    EXPECT_EQ(ContentOf(host / "card/capture.dmb"), "so far");
    EXPECT_TRUE(files->Close(handle));
}

TEST_F(Files, BadCallsFail) {
    EXPECT_EQ(Open(u"\\missing"), INVALID_HANDLE_VALUE);
    EXPECT_EQ(LastError(), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(Open(u"\\missing\\x"), INVALID_HANDLE_VALUE);
    EXPECT_EQ(LastError(), ERROR_PATH_NOT_FOUND);
    EXPECT_EQ(Open(u"x"), INVALID_HANDLE_VALUE);
    EXPECT_EQ(LastError(), ERROR_INVALID_NAME);
    EXPECT_EQ(Open(nullptr), INVALID_HANDLE_VALUE);
    EXPECT_EQ(files->Open(u"\\x", GENERIC_READ, 0, 77), INVALID_HANDLE_VALUE);
    EXPECT_EQ(LastError(), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(Open(u"\\"), INVALID_HANDLE_VALUE) << "a folder is no file";
    EXPECT_EQ(Open((WString(u"\\") + WString(300, u'x')).c_str()), INVALID_HANDLE_VALUE);
    char byte = 0;
    for (HANDLE handle : {HANDLE{nullptr}, INVALID_HANDLE_VALUE, reinterpret_cast<HANDLE>(0x100)}) {
        EXPECT_FALSE(files->Read(handle, &byte, 1, done));
        EXPECT_FALSE(files->Write(handle, &byte, 1, done));
        EXPECT_FALSE(files->Seek(handle, 0, FILE_BEGIN));
        EXPECT_FALSE(files->Size(handle));
        EXPECT_FALSE(files->Close(handle));
        EXPECT_EQ(LastError(), ERROR_INVALID_HANDLE);
    }
}

TEST_F(Files, AccessIsKept) {
    EXPECT_TRUE(Save(u"\\a", "x"));
    char byte = 0;
    const HANDLE reader = Open(u"\\a");
    EXPECT_FALSE(files->Write(reader, &byte, 1, done));
    EXPECT_TRUE(files->Close(reader));
    const HANDLE writer = Create(u"\\a");
    EXPECT_FALSE(files->Read(writer, &byte, 1, done));
    EXPECT_EQ(LastError(), ERROR_ACCESS_DENIED);
    EXPECT_TRUE(files->Close(writer));
    EXPECT_FALSE(files->Close(writer)) << "closed already";
}

// ---- Sharing ----

TEST_F(Files, SharingModeNothingRefusesASecondOpening) {
    WriteContent(host / "root/a", "abc");
    const HANDLE first = Open(u"\\a");
    EXPECT_EQ(Open(u"\\a"), INVALID_HANDLE_VALUE);
    EXPECT_EQ(LastError(), ERROR_SHARING_VIOLATION);
    EXPECT_EQ(Create(u"\\\\a"), INVALID_HANDLE_VALUE);
    EXPECT_EQ(ContentOf(host / "root/a"), "abc") << "refused before it was emptied";
    EXPECT_TRUE(files->Close(first));
    EXPECT_EQ(Load(u"\\a"), "abc");
}

TEST_F(Files, ReadersMayShareIfBothAgree) {
    WriteContent(host / "root/a", "abc");
    const HANDLE first = Open(u"\\a", FILE_SHARE_READ);
    const HANDLE second = Open(u"\\a", FILE_SHARE_READ);
    EXPECT_NE(second, INVALID_HANDLE_VALUE);
    EXPECT_EQ(Open(u"\\a"), INVALID_HANDLE_VALUE);
    EXPECT_EQ(Create(u"\\a"), INVALID_HANDLE_VALUE);
    EXPECT_TRUE(files->Close(first));
    EXPECT_TRUE(files->Close(second));
    EXPECT_EQ(files->OpenCount(), 0u);
}

TEST_F(Files, AHandleThatIsLeftOpenKeepsItsFileClosedToOthers) {
    EXPECT_TRUE(Save(u"\\Profile\\list", "old"));
    files->SetFaults({.diskFullAfter = 2});
    const HANDLE left = Create(u"\\Profile\\list");
    EXPECT_FALSE(Write(left, "new"));
    files->SetFaults({});
    EXPECT_EQ(Load(u"\\Profile\\list"), "error 32");
    EXPECT_EQ(Create(u"\\Profile\\list"), INVALID_HANDLE_VALUE);
    EXPECT_EQ(files->OpenCount(), 1u);
    Mount(); // the program ends: nothing is committed
    EXPECT_EQ(Load(u"\\Profile\\list"), "old");
    EXPECT_EQ(std::distance(fs::directory_iterator(host / "profile"), {}), 1) << "and nothing is left behind";
}

// ---- The profile ----

TEST_F(Files, AProfileFileChangesWhenItIsClosed) {
    EXPECT_TRUE(Save(u"\\Profile\\DMB.dat", "old"));
    const HANDLE handle = Create(u"\\Profile\\DMB.dat");
    EXPECT_TRUE(Write(handle, "newer"));
    EXPECT_EQ(ContentOf(host / "profile/DMB.dat"), "old");
    EXPECT_EQ(files->List(u"\\Profile")->size(), 1u) << "what is not finished is not listed";
    EXPECT_TRUE(files->Close(handle));
    EXPECT_EQ(ContentOf(host / "profile/DMB.dat"), "newer");
}

TEST_F(Files, AFullDiskNeverLosesTheOldProfile) {
    EXPECT_TRUE(Save(u"\\Profile\\DMB.dat", "old"));
    for (ULONGLONG room = 0; room < 5; ++room) {
        files->SetFaults({.diskFullAfter = room});
        EXPECT_FALSE(Save(u"\\Profile\\DMB.dat", "newer"));
        EXPECT_EQ(done, room);
        EXPECT_EQ(LastError(), ERROR_WRITE_FAULT);
        files->SetFaults({});
        EXPECT_EQ(Load(u"\\Profile\\DMB.dat"), "old");
    }
}

TEST(ErrorNumbers, ABrokenCardAFullOneAndAForbiddenOneAreToldApart) {
    EXPECT_EQ(ErrorOfErrno(EIO), ERROR_WRITE_FAULT);
    EXPECT_EQ(ErrorOfErrno(ENODEV), ERROR_WRITE_FAULT);
    EXPECT_EQ(ErrorOfErrno(ENOSPC), ERROR_DISK_FULL);
    EXPECT_EQ(ErrorOfErrno(EROFS), ERROR_ACCESS_DENIED);
}

TEST_F(Files, AShortWriteNeverLosesTheOldProfile) {
    EXPECT_TRUE(Save(u"\\Profile\\DMB.dat", "old"));
    files->SetFaults({.shortWriteAfter = 3});
    const HANDLE handle = Create(u"\\Profile\\DMB.dat");
    EXPECT_TRUE(Write(handle, "newer"));
    EXPECT_EQ(done, 3u);
    EXPECT_FALSE(files->Close(handle));
    EXPECT_EQ(Load(u"\\Profile\\DMB.dat"), "old");
}

TEST_F(Files, AProfileFileIsReplacedAsAWhole) {
    EXPECT_TRUE(Save(u"\\Profile\\DMB.dat", "old"));
    EXPECT_EQ(files->Open(u"\\Profile\\DMB.dat", GENERIC_WRITE, 0, OPEN_EXISTING), INVALID_HANDLE_VALUE);
    fs::create_directory(host / "profile/folder");
    EXPECT_EQ(Create(u"\\Profile\\folder"), INVALID_HANDLE_VALUE);
    EXPECT_EQ(LastError(), ERROR_ACCESS_DENIED);
}

TEST_F(Files, ALeftoverOfACrashIsWrittenOver) {
    WriteContent(host / "profile/.DMB.dat.new", "a crash left this, longer than the new content");
    EXPECT_TRUE(Save(u"\\Profile\\DMB.dat", "new"));
    EXPECT_EQ(Load(u"\\Profile\\DMB.dat"), "new");
    EXPECT_FALSE(fs::exists(host / "profile/.DMB.dat.new"));
}

TEST_F(Files, AFailingCommitSaysSoAndKeepsTheOld) {
    const HANDLE handle = Create(u"\\Profile\\DMB.dat");
    EXPECT_TRUE(Write(handle, "new"));
    fs::create_directory(host / "profile/DMB.dat"); // somebody took the name meanwhile
    EXPECT_FALSE(files->Close(handle));
    EXPECT_TRUE(fs::is_directory(host / "profile/DMB.dat"));
    EXPECT_FALSE(fs::exists(host / "profile/.DMB.dat.new"));
}

// ---- Escapes ----

TEST_F(Files, NoPathLeavesItsFolder) {
    WriteContent(host / "secret", "secret");
    for (const WCHAR* path : {u"\\..\\secret", u"\\Profile\\..\\secret", u"\\x\\..\\..\\secret", u"\\../secret",
                              u"/etc/passwd", u"\\/etc/passwd", u"..\\secret"}) {
        EXPECT_EQ(Open(path), INVALID_HANDLE_VALUE);
        EXPECT_EQ(Create(path), INVALID_HANDLE_VALUE);
        EXPECT_FALSE(files->MakeFolder(path));
        EXPECT_FALSE(files->List(path));
        EXPECT_FALSE(files->FolderExists(path));
        EXPECT_FALSE(files->Space(path));
    }
    EXPECT_EQ(ContentOf(host / "secret"), "secret");
}

TEST_F(Files, NoSymbolicLinkIsFollowed) {
    fs::create_directory(host / "outside");
    WriteContent(host / "outside/a", "secret");
    fs::create_symlink(host / "outside", host / "root/folder");
    fs::create_symlink(host / "outside/a", host / "root/file");
    fs::create_symlink(host / "outside/a", host / "profile/file");
    fs::create_symlink(host / "outside/b", host / "root/dangling");
    for (const WCHAR* path : {u"\\folder\\a", u"\\file", u"\\dangling", u"\\folder\\new", u"\\Profile\\file"})
        EXPECT_EQ(Open(path), INVALID_HANDLE_VALUE);
    for (const WCHAR* path : {u"\\folder\\a", u"\\file", u"\\dangling", u"\\folder\\new", u"\\Profile\\file"})
        EXPECT_EQ(Create(path), INVALID_HANDLE_VALUE);
    EXPECT_FALSE(files->MakeFolder(u"\\folder\\made"));
    EXPECT_FALSE(files->List(u"\\folder"));
    EXPECT_TRUE(files->List(u"\\")->empty()) << "nor listed";
    EXPECT_EQ(ContentOf(host / "outside/a"), "secret");
    EXPECT_EQ(std::distance(fs::directory_iterator(host / "outside"), {}), 1);
}

TEST_F(Files, OnlyRegularFilesAreOpened) {
    ASSERT_EQ(mkfifo((host / "root/pipe").c_str(), 0600), 0);
    EXPECT_EQ(Open(u"\\pipe"), INVALID_HANDLE_VALUE) << "without waiting for its other end";
    EXPECT_EQ(LastError(), ERROR_ACCESS_DENIED);
    EXPECT_EQ(Create(u"\\pipe"), INVALID_HANDLE_VALUE);
}

// ---- Folders and space ----

TEST_F(Files, MakingFolders) {
    EXPECT_TRUE(files->MakeFolder(u"\\SDMMC Card\\DMB\\"));
    EXPECT_TRUE(files->FolderExists(u"\\SDMMC Card\\DMB"));
    EXPECT_FALSE(files->MakeFolder(u"\\SDMMC Card\\DMB\\"));
    EXPECT_EQ(LastError(), ERROR_ALREADY_EXISTS);
    EXPECT_FALSE(files->MakeFolder(u"\\SDMMC Card\\a\\b"));
    EXPECT_EQ(LastError(), ERROR_PATH_NOT_FOUND);
    EXPECT_FALSE(files->MakeFolder(u"\\"));
    EXPECT_FALSE(files->FolderExists(u"\\nowhere"));
}

TEST_F(Files, ListingIsSortedAndSaysWhatIsAFolder) {
    WriteContent(host / "card/b.dmb", "12345");
    WriteContent(host / "card/a.dmb", "");
    WriteContent(host / "card/.hidden", "");
    fs::create_directory(host / "card/DMB");
    const auto list = files->List(u"\\SDMMC Card\\");
    ASSERT_TRUE(list);
    ASSERT_EQ(list->size(), 3u);
    EXPECT_EQ((*list)[0].name, u"DMB");
    EXPECT_TRUE((*list)[0].isFolder);
    EXPECT_EQ((*list)[2].name, u"b.dmb");
    EXPECT_EQ((*list)[2].size, 5u);
    EXPECT_FALSE(files->List(u"\\SDMMC Card\\nowhere"));
}

TEST_F(Files, FreeSpaceIsTheHosts) {
    const auto space = files->Space(u"\\SDMMC Card\\");
    ASSERT_TRUE(space);
    EXPECT_GT(space->total, 0u);
    EXPECT_LE(space->freeForCaller, space->total);
    files->SetFaults({.freeBytes = 51118080});
    EXPECT_EQ(files->Space(u"\\SDMMC Card\\")->freeForCaller, 51118080u);
    files->SetFaults({.refuseFreeSpace = true});
    EXPECT_FALSE(files->Space(u"\\SDMMC Card\\"));
}

TEST_F(Files, AMountWhoseHostFolderIsMissingIsAnEmptySlot) {
    fs::remove_all(host / "card");
    EXPECT_FALSE(files->FolderExists(u"\\SDMMC Card"));
    EXPECT_FALSE(files->Space(u"\\SDMMC Card\\"));
    EXPECT_EQ(Create(u"\\SDMMC Card\\x"), INVALID_HANDLE_VALUE);
    EXPECT_EQ(LastError(), ERROR_PATH_NOT_FOUND);
}

// ---- Faults ----

TEST_F(Files, ACardThatIsAbsent) {
    const HANDLE open = Create(u"\\SDMMC Card\\capture.dmb");
    files->SetFaults({.cardAbsent = true});
    EXPECT_FALSE(files->FolderExists(u"\\SDMMC Card\\"));
    EXPECT_FALSE(files->Space(u"\\SDMMC Card\\"));
    EXPECT_FALSE(files->MakeFolder(u"\\SDMMC Card\\DMB"));
    EXPECT_FALSE(Write(open, "more")) << "taken out while writing";
    EXPECT_TRUE(files->Close(open));
    EXPECT_TRUE(Save(u"\\MotBody.dat", "the rest of the device goes on"));
}

TEST_F(Files, RefusedCreationsAndOpenings) {
    EXPECT_TRUE(Save(u"\\a", "x"));
    files->SetFaults({.refuseCreate = true});
    EXPECT_FALSE(Save(u"\\a", "y"));
    EXPECT_FALSE(files->MakeFolder(u"\\f"));
    EXPECT_EQ(Load(u"\\a"), "x");
    files->SetFaults({.refuseOpen = true});
    EXPECT_EQ(Load(u"\\a"), "error 5");
}

TEST_F(Files, FaultsMayConcernOneFileOnly) {
    files->SetFaults({.only = u"List", .refuseCreate = true});
    EXPECT_TRUE(Save(u"\\DMB.dat", "x"));
    EXPECT_FALSE(Save(u"\\DMBList", "x"));
}

TEST_F(Files, AShortRead) {
    EXPECT_TRUE(Save(u"\\a", "0123456789"));
    files->SetFaults({.readBytes = 4});
    EXPECT_EQ(Load(u"\\a"), "0123");
    EXPECT_EQ(Load(u"\\a"), "");
}

// ---- Threads ----

TEST_F(Files, AStreamingThreadWritesWhileTheWindowThreadReads) {
    EXPECT_TRUE(Save(u"\\a", "abc"));
    const HANDLE capture = Create(u"\\SDMMC Card\\capture.dmb");
    std::thread streaming([&] {
        DWORD written = 0;
        for (int i = 0; i < 500; ++i)
            EXPECT_TRUE(files->Write(capture, "0123456789", 10, written));
    });
    for (int i = 0; i < 200; ++i)
        EXPECT_EQ(Load(u"\\a"), "abc");
    streaming.join();
    EXPECT_EQ(files->Size(capture), 5000u);
    EXPECT_TRUE(files->Close(capture));
}

} // namespace
} // namespace ce
