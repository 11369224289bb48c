"""A server's connections, each of which breaks while the server answers a commit."""

import contextlib
import selectors
import socket
import threading


class CommitCut:
    """Hands on all that passes, and ends a connection in place of the answer to COMMIT, which has then happened.

    What passes must not be encrypted."""

    def __init__(self, host, port):
        self.server = (host, port)
        self.listener = socket.create_server(("127.0.0.1", 0))
        self.port = self.listener.getsockname()[1]
        threading.Thread(target=self.serve, daemon=True).start()

    def close(self):
        self.listener.shutdown(socket.SHUT_RDWR)
        self.listener.close()

    def serve(self):
        with contextlib.suppress(OSError):  # closed
            while True:
                client, _ = self.listener.accept()
                with client, socket.create_connection(self.server) as server, contextlib.suppress(ConnectionError):
                    self.hand_on(client, server)

    @staticmethod
    def hand_on(client, server):
        committing = False
        with selectors.DefaultSelector() as ready:
            ready.register(client, selectors.EVENT_READ, server)
            ready.register(server, selectors.EVENT_READ, client)
            while True:
                for key, _ in ready.select():
                    part = key.fileobj.recv(65536)
                    if not part or (committing and key.fileobj is server):
                        return
                    committing = committing or b"COMMIT" in part
                    key.data.sendall(part)
