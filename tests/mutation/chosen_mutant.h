// chosen_mutant.h - included in each source of the build that run.py makes. At each mutant the source calls isChosen to
// ask whether the mutant is switched on. QUILLBOX_MUTANT is the number of the mutant that is switched on.
// QUILLBOX_REACHED is the descriptor of a file with one byte for each mutant. The byte becomes 1 when the program
// reaches the mutant. The file is mapped, so that it keeps the bytes of a killed process too.
#pragma once

#include <sys/mman.h>
#include <sys/stat.h>

#include <atomic>
#include <cstdlib>

namespace mutation {

inline std::atomic<int> chosen = -1;  // not read yet
inline std::atomic<unsigned char*> reached = nullptr;

inline int readChosen()
{
    if (const char* file = std::getenv("QUILLBOX_REACHED")) {
        const int descriptor = std::atoi(file);
        struct stat status = {};
        void* map = MAP_FAILED;
        if (::fstat(descriptor, &status) == 0)
            map = ::mmap(nullptr, static_cast<std::size_t>(status.st_size), PROT_WRITE, MAP_SHARED, descriptor, 0);
        if (map == MAP_FAILED)
            std::abort();
        reached = static_cast<unsigned char*>(map);
    }
    const char* number = std::getenv("QUILLBOX_MUTANT");
    return chosen = number ? std::atoi(number) : 0;
}

// Not constexpr, so that a mutant in a constant expression doesn't compile and is left out.
inline bool isChosen(int mutant)
{
    const int known = chosen.load(std::memory_order_relaxed);
    const int number = known < 0 ? readChosen() : known;
    if (unsigned char* flags = reached.load(std::memory_order_relaxed))
        flags[mutant] = 1;
    return number == mutant;
}

}  // namespace mutation
