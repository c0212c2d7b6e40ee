// Races the first use of the guard registry from several threads, then uses guards
// after the registry has been torn down at exit. Prints one line per phase.
#include "reposit/RRepositObject.h"

#include <barrier>
#include <cstdio>
#include <memory>
#include <thread>
#include <vector>

namespace {

void afterTeardown()
{
    RRepositObject object;
    RObject* added = &object;
    RRepositObject::addGuard(&added);
    RObject* changed = &object;
    RRepositObject::changeGuard(&changed, &object);
    RObject* removed = &object;
    RRepositObject::removeGuard(&removed);
    std::printf("teardown: add=%s change=%s remove=%s\n", added ? "kept" : "null",
                changed ? "kept" : "null", removed ? "kept" : "null");
    std::fflush(stdout);
    RRepositObject::clearGuards(&object); // and must not touch anything either
}

} // namespace

int main()
{
    // Registered before the registry exists, so it runs after the registry is gone.
    std::atexit(afterTeardown);

    constexpr int kThreads = 4;
    auto object = std::make_unique<RRepositObject>();
    std::vector<RObject*> guarded(kThreads, object.get());
    std::barrier start(kThreads);
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i) {
        threads.emplace_back([&, i] {
            start.arrive_and_wait();
            RRepositObject::addGuard(&guarded[i]);
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    object.reset();

    bool allCleared = true;
    for (RObject* slot : guarded)
        allCleared = allCleared && slot == nullptr;
    std::printf("race: %s\n", allCleared ? "one registry" : "guards lost");
    std::fflush(stdout);
    return 0;
}
