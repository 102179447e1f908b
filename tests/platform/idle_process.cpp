// A process that does nothing for a while, so a test can find it among the running processes.
#include <chrono>
#include <thread>

int main() {
    // Ended by the test; the limit only bounds a child left behind by a crashed test.
    std::this_thread::sleep_for(std::chrono::seconds(120));
    return 0;
}
