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
        RObject* guards[] = { &object, &object, &object };
        RRepositObject::addGuard(&guards[0]);
        RRepositObject::changeGuard(&guards[1], &object);
        RRepositObject::removeGuard(&guards[2]);
        const auto state = [](const RObject* slot) { return slot ? "kept" : "null"; };
        std::printf("teardown: add=%s change=%s remove=%s\n", state(guards[0]), state(guards[1]),
            state(guards[2]));
    });

    std::vector<RObject*> guarded(4);
    {
        RRepositObject object;
        std::barrier start(std::ssize(guarded));
        std::vector<std::jthread> threads;
        for (RObject*& slot : guarded) {
            threads.emplace_back([&] {
                slot = &object;
                start.arrive_and_wait();
                RRepositObject::addGuard(&slot);
            });
        }
    }
    std::printf("race: %s\n",
        std::ranges::count(guarded, nullptr) == std::ssize(guarded) ? "one registry"
                                                                    : "guards lost");
    return 0;
}
