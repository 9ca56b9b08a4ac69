#ifndef DESCRIPTOR_P_H
#define DESCRIPTOR_P_H

#include <unistd.h>

namespace TQServerInternal {

// Owns a file descriptor; negative for none.
class Descriptor
{
public:
    explicit Descriptor(int number) : m_number(number) {}
    ~Descriptor()
    {
        if (m_number >= 0) {
            ::close(m_number);
        }
    }
    Descriptor(const Descriptor &) = delete;
    Descriptor &operator=(const Descriptor &) = delete;

    int number() const { return m_number; }

private:
    const int m_number;
};

}  // namespace TQServerInternal

#endif
