// Sends every datagram back as it came: what a request costs for which nothing is done.
#include <arpa/inet.h>
#include <cstdio>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

int main()
{
    const int server = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    if (server < 0 || bind(server, reinterpret_cast<sockaddr*>(&address), length) != 0 ||
        getsockname(server, reinterpret_cast<sockaddr*>(&address), &length) != 0) {
        std::perror("echo");
        return 1;
    }
    std::printf("ready on udp:127.0.0.1:%u\n", ntohs(address.sin_port));
    std::fflush(stdout);
    static unsigned char datagram[65536];
    for (;;) {
        sockaddr_in from = {};
        length = sizeof from;
        const ssize_t count = recvfrom(server, datagram, sizeof datagram, 0,
                                       reinterpret_cast<sockaddr*>(&from), &length);
        if (count >= 0)
            sendto(server, datagram, static_cast<size_t>(count), 0,
                   reinterpret_cast<sockaddr*>(&from), length);
    }
}
