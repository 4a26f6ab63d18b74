#pragma once

#include <windows.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

/// Makes a folder the process's current directory for one scope.
///
/// Owner:  the test, by value.
/// Thread: the whole process is redirected; one at a time.
class WorkingDirectory {
public:
    explicit WorkingDirectory(const std::filesystem::path& folder) : m_before(std::filesystem::current_path())
    {
        std::filesystem::current_path(folder);
    }
    ~WorkingDirectory() { std::filesystem::current_path(m_before); }
    WorkingDirectory(const WorkingDirectory&) = delete;
    WorkingDirectory& operator=(const WorkingDirectory&) = delete;

private:
    std::filesystem::path m_before;
};

/// An empty folder of this process, below the system's folder for temporary files, gone at the end.
///
/// Owner:  the test, by value.
/// Thread: any.
class TemporaryFolder {
public:
    explicit TemporaryFolder(const std::wstring& name)
        : m_path(std::filesystem::temp_directory_path() / (name + std::to_wstring(::GetCurrentProcessId())))
    {
        std::filesystem::remove_all(m_path);
        std::filesystem::create_directories(m_path);
    }
    ~TemporaryFolder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
        EXPECT_FALSE(ignored) << ignored.message();
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    [[nodiscard]] const std::filesystem::path& Path() const { return m_path; }

private:
    std::filesystem::path m_path;
};
