#pragma once

#include <algorithm>
#include <cstdint>
#include <memory>
#include <new>

#include "base/tarray.h"

namespace tessarin {

/// The commands of a controller, owned by it, in the order in which they were added. A command has
/// an `id` and a flag `enabled`.
template <class Command> class command_list {
public:
    command_list() = default;
    command_list(const command_list&) = delete;
    command_list& operator=(const command_list&) = delete;
    ~command_list() { std::for_each(begin(), end(), std::default_delete<Command>()); }

    /// Appends a command and returns its id, one above the largest. Throws std::bad_alloc.
    uint32_t Add(std::unique_ptr<Command> command) {
        command->id = 1;
        for (const Command* other : commands) {
            command->id = std::max(command->id, other->id + 1);
        }
        if (commands.Add(command.get()) == 0) {
            throw std::bad_alloc();
        }
        return command.release()->id;
    }

    Command* Find(uint32_t id) {
        Command** place = Place(id);
        return place != end() ? *place : nullptr;
    }

    void Delete(uint32_t id) {
        Command** place = Place(id);
        if (place != end()) {
            delete *place;
            static_cast<void>(commands.RemoveAt(static_cast<int32_t>(place - begin())));
        }
    }

    void Enable(uint32_t id, bool enabled) {
        if (Command* command = Find(id)) {
            command->enabled = enabled;
        }
    }

    Command** begin() { return commands.begin(); }
    Command** end() { return commands.end(); }
    const Command* const* begin() const { return commands.begin(); }
    const Command* const* end() const { return commands.end(); }

private:
    Command** Place(uint32_t id) {
        return std::find_if(begin(), end(), [&](const Command* each) { return each->id == id; });
    }

    TArray<Command*> commands;
};

} // namespace tessarin
