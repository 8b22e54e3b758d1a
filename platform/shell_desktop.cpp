#include "platform/shell_desktop.h"

#include <dlfcn.h>
#include <gio/gdesktopappinfo.h>
#include <gio/gio.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <future>
#include <memory>
#include <thread>

#include "platform/shell_command.h"

namespace platform {
namespace {

constexpr std::chrono::seconds kPatience(5);

// The functions of GIO that are used here. The library is loaded at the first use and stays: most runs never
// open a document, and loading it at every start would cost more than a megabyte. A system without GIO is one
// that associates nothing.
struct Gio {
    decltype(&g_object_unref) object_unref;
    decltype(&g_bus_get_sync) bus_get_sync;
    decltype(&g_file_new_for_path) file_new_for_path;
    decltype(&g_file_query_info) file_query_info;
    decltype(&g_file_info_get_content_type) file_info_get_content_type;
    decltype(&g_app_info_get_default_for_type) app_info_get_default_for_type;
    decltype(&g_app_info_get_commandline) app_info_get_commandline;
    decltype(&g_app_info_get_name) app_info_get_name;
    decltype(&g_desktop_app_info_get_filename) desktop_app_info_get_filename;
    decltype(&g_desktop_app_info_get_boolean) desktop_app_info_get_boolean;
    decltype(&g_desktop_app_info_has_key) desktop_app_info_has_key;
    decltype(&g_desktop_app_info_launch_uris_as_manager) desktop_app_info_launch_uris_as_manager;
};

const Gio* LoadGio() {
    static Gio gio;
    void* const library = dlopen("libgio-2.0.so.0", RTLD_NOW);
    const auto find = [library](auto& function, const char* name) {
        function = reinterpret_cast<std::remove_reference_t<decltype(function)>>(dlsym(library, name));
        return function != nullptr;
    };
    const bool complete =
        library && find(gio.object_unref, "g_object_unref") && find(gio.bus_get_sync, "g_bus_get_sync") &&
        find(gio.file_new_for_path, "g_file_new_for_path") &&
        find(gio.file_query_info, "g_file_query_info") &&
        find(gio.file_info_get_content_type, "g_file_info_get_content_type") &&
        find(gio.app_info_get_default_for_type, "g_app_info_get_default_for_type") &&
        find(gio.app_info_get_commandline, "g_app_info_get_commandline") &&
        find(gio.app_info_get_name, "g_app_info_get_name") &&
        find(gio.desktop_app_info_get_filename, "g_desktop_app_info_get_filename") &&
        find(gio.desktop_app_info_get_boolean, "g_desktop_app_info_get_boolean") &&
        find(gio.desktop_app_info_has_key, "g_desktop_app_info_has_key") &&
        find(gio.desktop_app_info_launch_uris_as_manager, "g_desktop_app_info_launch_uris_as_manager");
    return complete ? &gio : nullptr;
}

const Gio* TheGio() {
    static const Gio* const gio = LoadGio();
    return gio;
}

struct Unref {
    void operator()(void* object) const { TheGio()->object_unref(object); }
};
template <typename Object>
using Owned = std::unique_ptr<Object, Unref>;

Owned<GDesktopAppInfo> DefaultFor(const Gio& gio, const char* type) {
    GAppInfo* const program = type ? gio.app_info_get_default_for_type(type, FALSE) : nullptr;
    return Owned<GDesktopAppInfo>(
        reinterpret_cast<GDesktopAppInfo*>(program));  // on Unix there is no other kind
}

// By the file's name, and by its first bytes where the name does not tell.
QByteArray TypeOf(const Gio& gio, const QByteArray& native) {
    const Owned<GFile> file(gio.file_new_for_path(native.constData()));
    const Owned<GFileInfo> info(gio.file_query_info(file.get(), G_FILE_ATTRIBUTE_STANDARD_CONTENT_TYPE,
                                                    G_FILE_QUERY_INFO_NONE, nullptr, nullptr));
    return QByteArray(info ? gio.file_info_get_content_type(info.get()) : nullptr);
}

// What the process that is to become the program is told.
struct Start {
    const std::atomic<bool>& given_up;
    char* folder;  // null: where it is
};

void BecomeProgram(void* data) {
    const Start& start = *static_cast<const Start*>(data);
    if (start.given_up) {
        _exit(1);  // nobody is to be surprised by a document that opens late
    }
    LeaveSession(start.folder);
}

bool Launch(const Gio& gio, GDesktopAppInfo* program, const QByteArray& native,
            const std::atomic<bool>& given_up) {
    constexpr auto kFlags = static_cast<GSpawnFlags>(G_SPAWN_SEARCH_PATH | G_SPAWN_STDOUT_TO_DEV_NULL |
                                                     G_SPAWN_STDERR_TO_DEV_NULL);
    // Percent-encoded from the bytes, so that names that are not UTF-8 reach the program unharmed.
    QByteArray address = "file://" + native.toPercentEncoding("/");
    GList addresses{address.data(), nullptr, nullptr};
    char root[] = "/";
    Start start{given_up, gio.desktop_app_info_has_key(program, "Path") ? nullptr : root};
    // The bus makes one wait here, not after the last look at whether anybody still wants the document.
    const Owned<GDBusConnection> bus(gio.bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr));
    return !given_up &&
           gio.desktop_app_info_launch_uris_as_manager(program, &addresses, nullptr, kFlags, BecomeProgram,
                                                       &start, nullptr, nullptr, nullptr);
}

bool OpenByType(const QByteArray& native, const std::atomic<bool>& given_up) {
    const Gio* const gio = TheGio();
    if (!gio) {
        return false;
    }
    const QByteArray type = TypeOf(*gio, native);
    const auto program = DefaultFor(*gio, type.isEmpty() ? nullptr : type.constData());
    return program && Launch(*gio, program.get(), native, given_up);
}

}  // namespace

std::optional<DesktopProgram> ProgramForType(const char* type) {
    const Gio* const gio = TheGio();
    const Owned<GDesktopAppInfo> program = gio ? DefaultFor(*gio, type) : nullptr;
    if (!program) {
        return std::nullopt;
    }
    GAppInfo* const info = reinterpret_cast<GAppInfo*>(program.get());
    return DesktopProgram{gio->app_info_get_commandline(info), gio->app_info_get_name(info),
                          gio->desktop_app_info_get_filename(program.get()),
                          gio->desktop_app_info_get_boolean(program.get(), "Terminal") != FALSE};
}

// GIO talks to the session bus. One that has stopped would hold the caller for ever, so it is asked on a
// thread that nobody waits for longer than that; what comes after that is no longer wanted.
bool OpenWithDesktop(const QByteArray& native) {
    std::promise<bool> promise;
    std::future<bool> opened = promise.get_future();
    const auto given_up = std::make_shared<std::atomic<bool>>(false);
    std::thread([native, given_up, answer = std::move(promise)]() mutable {
        answer.set_value(OpenByType(native, *given_up));
    }).detach();
    if (opened.wait_for(kPatience) != std::future_status::ready) {
        *given_up = true;
        return false;
    }
    return opened.get();
}

}  // namespace platform
