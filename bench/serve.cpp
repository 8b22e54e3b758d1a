// Starts one of the real servers for the benchmarks and keeps it until standard input ends.
//
//   serve vsftpd|pure_ftpd|proftpd|pyftpdlib [ADDRESS]      prints "HOST:PORT HOME"

#include <cstdio>
#include <iostream>
#include <string>

#include "tests/support/ftp_server.h"

int main(int count, char** arguments) {
    if (count < 2) return 2;
    for (const ftp_test::Make make : ftp_test::AllServers()) {
        if (ftp_test::Name(make) != arguments[1]) continue;
        ftp_test::ServerOptions options;
        if (count > 2) options.address = arguments[2];
        const ftp_test::Server server(make, options);
        std::cout << server.HostField() << " " << server.Home().string() << std::endl;
        while (std::getchar() != EOF) {
        }
        return 0;
    }
    std::cerr << "no such server: " << arguments[1] << "\n";
    return 2;
}
