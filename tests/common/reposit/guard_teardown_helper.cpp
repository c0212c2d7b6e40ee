// Races the first use of the guard registry from several threads, then uses guards
// after the registry has been torn down at exit. Prints one line per phase.
#include "reposit/RRepositObject.h"

#include <algorithm>
#include <barrier>
#include <cstdio>
#include <cstdlib>
#include <thread>
#include <vector>

int main()
{
    // Registered before the registry exists, so it runs after the registry is gone. The
    // object's destructor clears its guards then too, and must touch nothing either.
    std::atexit([] {
        RRepositObject object;
        RObject* added = &object;
        RObject* changed = &object;
        RObject* removed = &object;
        RRepositObject::addGuard(&added);
        RRepositObject::changeGuard(&changed, &object);
        RRepositObject::removeGuard(&removed);
        std::printf("teardown: add=%s change=%s remove=%s\n", added ? "kept" : "null",
                    changed ? "kept" : "null", removed ? "kept" : "null");
    });

    std::vector<RObject*> guarded(4);
    {
        RRepositObject object;
        std::barrier start(static_cast<std::ptrdiff_t>(guarded.size()));
        std::vector<std::jthread> threads;
        for (RObject*& slot : guarded) {
            threads.emplace_back([&] {
                slot = &object;
                start.arrive_and_wait();
                RRepositObject::addGuard(&slot);
            });
        }
    }
    const bool allCleared = std::ranges::count(guarded, nullptr) == std::ssize(guarded);
    std::printf("race: %s\n", allCleared ? "one registry" : "guards lost");
    return 0;
}
