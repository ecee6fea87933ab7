#include <iostream>
#include <tarn/Client.h>

int main()
{
    tarn::Client client;
    try {
        std::cout << "daemon " << client.version() << "\n";
        const auto made = client.encrypt({.from = "alice@example.com",
                                          .to = {"bob@example.com"},
                                          .message = "Subject: Grüße 🔒\r\n\r\nOnly for Bob.\r\n"},
                                         {.password = "wonderland"});
        client.decrypt({.envelope = made.envelope, .recipient = "bob@example.com"}, {.password = "builder"});
        while (const auto item = client.nextItem()) {
            std::cout << item->contentType << ": " << item->data << "\n";
        }
    } catch (const tarn::Error& error) {
        std::cerr << error.what() << "\n" << error.log();
        return 1;
    }
}
