#pragma once
// Allocation failure at a command boundary. A command that runs out of memory
// must not take the program and every open document with it: the boundary
// (menu command, dialog OK, preview refresh, open, save, paste, a command of
// the command-line tool) runs its work through GuardMemory, which turns
// std::bad_alloc into the system's message and a false answer.
#include <QString>

#include <new>
#include <type_traits>
#include <utility>

namespace vm {

// What the user reads when a command ran out of memory.
QString OutOfMemoryMessage();
// Shows OutOfMemoryMessage through the system's message box.
void ReportOutOfMemory();

// Runs Work (answering bool, or nothing); false after an allocation failure,
// which has then been reported.
template <class F> bool GuardMemory(F&& Work) {
    try {
        if constexpr (std::is_void_v<decltype(std::forward<F>(Work)())>) {
            std::forward<F>(Work)();
            return true;
        } else {
            return static_cast<bool>(std::forward<F>(Work)());
        }
    } catch (const std::bad_alloc&) {
        ReportOutOfMemory();
        return false;
    }
}

} // namespace vm
