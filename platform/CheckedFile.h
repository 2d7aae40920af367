#pragma once

#include <QString>
#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include <sys/types.h>

namespace runebook {

/// An open file whose every step is checked. It remembers the first step that failed and why; all later ones
/// fail as well. Nothing here waits for a pipe or a terminal.
class CheckedFile
{
public:
    enum class Step { None, Open, Lock, Reserve, Write, Truncate, Sync, Verify, Close, Rename };

    /// Opens \a path with the flags and the mode of open(2).
    CheckedFile(const QString &path, int flags, mode_t mode = 0666);
    ~CheckedFile();
    CheckedFile(const CheckedFile &) = delete;
    CheckedFile &operator=(const CheckedFile &) = delete;

public: // asking
    bool isOpen() const { return m_descriptor >= 0; }
    /// Whether it is open and neither folder, pipe nor device.
    bool isRegular() const;
    /// Whether its name still leads to it.
    bool isStillNamed() const;
    /// The errno of the step that failed first; 0 while none has.
    int failure() const { return m_failure; }
    Step failedStep() const { return m_failedStep; }
    /// "Writing “/a/b.xml” failed: No space left on device", translated.
    QString failureText() const;
    const QString &path() const { return m_path; }
    qint64 size() const;
    int descriptor() const { return m_descriptor; }

public: // writing
    enum class Lock { Whole, Shared };
    /// How long to wait for another program that saves or reads the file: longer than that takes.
    static constexpr std::chrono::milliseconds kPatience {2000};
    /// Takes the file for this process as long as it is open, or shares it with others that do. False when
    /// another process has it and keeps it longer than \a patience.
    bool lock(Lock kind = Lock::Whole, std::chrono::milliseconds patience = {});
    /// Makes sure that the disk has room for \a size bytes in all, the content untouched; where a file system
    /// cannot tell, the answer is true.
    bool reserve(qint64 size);
    bool write(std::string_view block);
    /// Ends the file behind what was written, waits for the disk, and looks whether all of it has arrived.
    bool settle();
    /// Goes back to the beginning and forgets that settle() was interrupted: the whole is to be written
    /// again.
    void startAgain();
    bool close();
    /// Gives the file another name, whose place must be free; false when it is not.
    bool renameTo(const QString &path);

public: // reading, from the beginning
    /// Fills \a buffer as far as the file goes; nothing when reading fails.
    std::optional<std::string_view> readBlock(std::string &buffer);
    /// Writes all of \a source into this.
    bool writeContentOf(CheckedFile &source);
    /// Compares byte for byte.
    bool hasContentOf(CheckedFile &source);

private:
    bool failAt(Step step, int code);

    QString m_path;
    int m_descriptor;
    int m_failure = 0;
    Step m_failedStep = Step::None;
    qint64 m_written = 0;
    qint64 m_readPlace = 0;
};

/// Waits until the names in the folder of \a path are on the disk. The errno, or 0; file systems that cannot
/// sync a folder count as done.
int syncFolderOf(const QString &path);

} // namespace runebook
