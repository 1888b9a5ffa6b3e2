// The device library of an installed program: where it is looked for, and what is said of one that
// cannot be used. The simulated instrument, which stands in the last place, never answers for it.
#include "tests/end_to_end/controller_run.h"

#include <elf.h>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <unistd.h>

using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;

namespace fs = std::filesystem;

namespace
{

constexpr const char* library_name = "libCOM-KOV-CTRL.so";
constexpr const char* own_product = "Product identification: KOV-CTRL, Rev. 1-00, simulated\n";
constexpr const char* other_product = "Product identification: Another library\n";

/// A program with its folders, as a package installs them.
struct Installed : ControllerRun {
    explicit Installed(std::string_view scenario = {}) : ControllerRun{"", scenario}
    {
        for (const char* part : {"bin", "lib/kov-controller/maker", "lib/kov-controller/simulator"})
            fs::create_directories(fs::path{folder} / part);
        program = folder + "/bin/KOV-Controller";
        fs::copy(CONTROLLER_PROGRAM, program);
        fs::copy(simulated, folder + "/lib/kov-controller/simulator");
        output = Stream::pipe;
        maker = folder + "/lib/kov-controller/maker/";
    }

    /// What the program prints; it ends well, whatever the library is.
    [[nodiscard]] std::string print(std::string_view command_line)
    {
        set_command_line(command_line);
        PseudoTerminal terminal{*this};
        EXPECT_EQ(terminal.exit_status(), 0);
        expect_terminal_restored(terminal);
        EXPECT_EQ(terminal.terminal_bytes(), ""); // of the system's loader, neither
        return terminal.piped_out();
    }

    /// The folder for the maker's library, with the slash at its end.
    std::string maker;

    inline static const std::string simulated =
        (fs::path{CONTROLLER_PROGRAM}.parent_path() / library_name).string();
};

std::string refusal(const std::string& file, const std::string& cause)
{
    return "The device library '" + file + "' cannot be used: " + cause + "\n";
}

/// The simulated instrument's file with another byte.
std::string patched(std::size_t at, char byte)
{
    std::string bytes = contents(Installed::simulated);
    bytes.at(at) = byte;
    return bytes;
}

/// The same without a function: it has another name.
std::string without(const std::string& function)
{
    std::string bytes = contents(Installed::simulated);
    const std::string name = '\0' + std::string{"COM_KOV_CTRL_"} + function + '\0';
    std::size_t at = bytes.find(name);
    EXPECT_NE(at, std::string::npos);
    for (; at != std::string::npos; at = bytes.find(name, at + 1))
        bytes[at + name.size() - 2] = '_';
    return bytes;
}

TEST(DeviceLibrary, FirstPlaceThatHoldsOneDecides)
{
    Installed run;
    const auto product = [&run] { return run.print("3 -q -pi -T"); };
    const std::string other = std::string{OTHER_LIBRARY_FOLDER} + '/' + library_name;
    EXPECT_EQ(product(), own_product);
    fs::copy(other, run.maker);
    EXPECT_EQ(product(), other_product);
    fs::copy(run.simulated, run.folder + "/bin");
    EXPECT_EQ(product(), own_product);
    fs::remove(run.folder + "/bin/" + library_name);
    fs::remove(run.maker + library_name);
    for (const char* path : {"/not/there:", "/not/there:/tmp:"}) {
        run.environment["LD_LIBRARY_PATH"] = std::string{path} + OTHER_LIBRARY_FOLDER;
        EXPECT_EQ(product(), other_product);
    }
    run.environment["KOV_DEVICE_LIBRARY"] = run.simulated;
    EXPECT_EQ(product(), own_product);
    fs::copy(other, run.folder + "/other.so");
    run.environment["KOV_DEVICE_LIBRARY"] = "other.so"; // in the working directory
    EXPECT_EQ(product(), other_product);
    for (const std::string name : {"", "/not/there.so"}) {
        run.environment["KOV_DEVICE_LIBRARY"] = name;
        EXPECT_EQ(product(), "The device library '" + name +
                                 "' (named by KOV_DEVICE_LIBRARY) cannot be used: there is no such "
                                 "file\n");
    }
    run.environment.erase("KOV_DEVICE_LIBRARY");
    run.environment.erase("LD_LIBRARY_PATH");
    fs::remove(run.folder + "/lib/kov-controller/simulator/" + library_name);
    EXPECT_THAT(product(), EndsWith("/lib/kov-controller/simulator/libCOM-KOV-CTRL.so'\n"));
    EXPECT_THAT(product(), HasSubstr("There is no device library: it was looked for as '" +
                                     run.folder + "/bin/libCOM-KOV-CTRL.so', '"));
}

/// What stands in the maker's folder, and what is said of it.
struct Unusable {
    const char* what;
    std::function<void(const std::string& file)> make;
    const char* cause;
};

TEST(DeviceLibrary, WhatCannotBeUsedIsToldAndEndsTheSearch)
{
    const std::string whole = contents(Installed::simulated);
    const std::string cut = whole.substr(0, whole.size() * 3 / 5);
    const auto holding = [](std::string bytes) {
        return [bytes = std::move(bytes)](const std::string& file) { write_file(file, bytes); };
    };
    const char* const no_library = "it is no shared library";
    const Unusable cases[] = {
        {"a dangling link", [](const std::string& file) { fs::create_symlink("/not/there", file); },
         "it is a link that leads nowhere"},
        {"a link to itself", [](const std::string& file) { fs::create_symlink(file, file); },
         "it is a link that leads nowhere"},
        {"a file that may not be read",
         [&](const std::string& file) {
             write_file(file, whole);
             fs::permissions(file, fs::perms::none);
         },
         "it may not be read"},
        {"a folder", [](const std::string& file) { fs::create_directory(file); }, "it is no file"},
        {"an empty file", holding(""), "it is empty"},
        {"a text", holding("#!/bin/sh\n"), no_library},
        {"an ELF file's beginning", holding(whole.substr(0, 40)), "its end is missing"},
        {"half a library", holding(cut), "its end is missing"},
        {"all but a byte", holding(whole.substr(0, whole.size() - 1)), "its end is missing"},
        {"as long as it should be, but never written",
         holding(whole.substr(0, 4096) + std::string(whole.size() - 4096, '\0')), no_library},
        {"a 32-bit library", holding(patched(EI_CLASS, ELFCLASS32)),
         "it is not made for 64-bit programs"},
        {"another machine's", holding(patched(18, static_cast<char>(EM_AARCH64))),
         "it is made for another kind of processor"},
        {"a program", [](const std::string& file) { fs::copy(CONTROLLER_PROGRAM, file); },
         "the system refuses to load it"},
        {"another library", holding(contents(FAILING_FILES_LIBRARY)),
         "it has none of the functions of the device library"},
        {"a misspelt file", [&](const std::string& file) { write_file(file + ".1", whole); },
         "there is no such file, but something else in its folder: 'libCOM-KOV-CTRL.so.1'"},
    };
    for (const Unusable& c : cases) {
        SCOPED_TRACE(c.what);
        Installed run;
        const std::string file = run.maker + library_name;
        c.make(file);
        if (c.cause == std::string_view{"it may not be read"} && access(file.c_str(), R_OK) == 0) {
            std::printf("Not tested: %s; this user may read everything.\n", c.what);
            continue;
        }
        EXPECT_EQ(run.print("3 -UN -p"), refusal(file, c.cause) + "Program completed\n");
        EXPECT_EQ(run.print("3 -G -p -q"), refusal(file, c.cause) +
                                               "Closing the communication stream...\n"
                                               "Program completed\n");
        EXPECT_THAT(run.print("3 -? -T"), Not(HasSubstr("device library '"))); // not needed
    }
}

TEST(DeviceLibrary, AMakersFolderThatIsNoneIsTold)
{
    const struct {
        std::function<void(const std::string& folder)> make;
        const char* cause; ///< empty = the simulated instrument answers
    } cases[] = {
        {[](const std::string& folder) { fs::create_symlink("/not/there", folder); },
         "its folder is a link that leads nowhere"},
        {[](const std::string& folder) { write_file(folder, "text"); }, "its folder is no folder"},
        {[](const std::string&) {}, ""},
        {[](const std::string& folder) { fs::create_symlink("simulator", folder); }, ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.cause);
        Installed run;
        const std::string folder = run.maker.substr(0, run.maker.size() - 1);
        fs::remove(folder);
        c.make(folder);
        EXPECT_EQ(run.print("3 -q -pi -T"),
                  *c.cause == '\0' ? own_product : refusal(run.maker + library_name, c.cause));
    }
}

/// What a library lacks, and what the program does with it.
TEST(DeviceLibrary, MissingFunctionsAreToldBeforeThePortIsOpened)
{
    const struct {
        const char* missing;
        const char* scenario;
        std::string printed; ///< its beginning
        const char* last;
    } cases[] = {
        {"SetCurrentConfig", "",
         "Functions missing in the device library: COM_KOV_CTRL_SetCurrentConfig\n"
         "The port is not opened, without COM_KOV_CTRL_SetCurrentConfig the instrument could not "
         "be "
         "left in order\n",
         "in order\n"},
        {"GetBufferState", "",
         "Functions missing in the device library: COM_KOV_CTRL_GetBufferState\n",
         " last communication port error: no error\nDevice is disabled\n"},
        {"SetCurrentConfig", "library_version 0063h\n",
         "Wrong DLL Version, expected 1-00 or later, found 0-99\n", "0-99\n"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.missing);
        Installed run{c.scenario};
        write_file(run.maker + library_name, without(c.missing));
        const std::string printed = run.print("3 -q -z -u -T");
        EXPECT_THAT(printed, testing::StartsWith(c.printed));
        EXPECT_THAT(printed, EndsWith(c.last));
    }
}

} // namespace
