#pragma once
// The per-user settings store: string values by application, section and key. UI thread only.
//
// One file per application below the user's configuration folder (websmide/), mode 0600, replaced atomically.
// A missing value reads as the empty string. A file that cannot be understood, or has lost its end, is never
// overwritten: it is set aside under another name first, for its owner only. Problems are told to the problem
// handler, in Swedish, and never thrown.

#include <QString>
#include <QStringList>
#include <functional>
#include <memory>

namespace settings {

class Store {
 public:
    /// number: the classic run-time number (70 permission denied, 75 path error, 61 disk full, 53 not found,
    /// 321 a file that cannot be understood).
    using ProblemHandler = std::function<void(int number, const QString& text)>;

    /// `folder` is a native path; empty for the per-user default ($XDG_CONFIG_HOME/websmide or
    /// ~/.config/websmide).
    explicit Store(const QString& folder = {});
    ~Store();

    /// Problems that came before there was a handler are told at once. The handler may use the store.
    void OnProblem(ProblemHandler handler);

    /// What other running programs have saved is seen too.
    QString GetSetting(const QString& application, const QString& section, const QString& key) const;
    /// On the disk when it returns, or reported; then the value stays in memory and is tried again with the
    /// next change. An unchanged value does not touch the disk.
    void SaveSetting(const QString& application, const QString& section, const QString& key,
                     const QString& value);

    /// Holds writes back until destroyed, so that many values make one file replacement. May be nested.
    class Batch {
     public:
        explicit Batch(Store& store);
        ~Batch();
        Batch(const Batch&) = delete;
        Batch& operator=(const Batch&) = delete;

     private:
        Store& store_;
    };

 private:
    class Private;
    std::unique_ptr<Private> d_;
};

/// The application name of the profiles and remembered folders.
inline const QString kFtpApplication = QStringLiteral("Websmide's FTP program");

}  // namespace settings
