# A pyftpdlib server on the loopback for the transfer tests: root folder, user and password
# from the command line; it binds a free port and prints it on its first line of output.
import logging
import sys

from pyftpdlib.authorizers import DummyAuthorizer
from pyftpdlib.handlers import FTPHandler
from pyftpdlib.servers import FTPServer

racine, utilisateur, mot_de_passe = sys.argv[1:4]
logging.basicConfig(level=logging.ERROR)
autorisations = DummyAuthorizer()
autorisations.add_user(utilisateur, mot_de_passe, racine, perm="elradfmwMT")
FTPHandler.authorizer = autorisations
FTPHandler.timeout = 120
serveur = FTPServer(("127.0.0.1", 0), FTPHandler)
print(serveur.socket.getsockname()[1], flush=True)
serveur.serve_forever()
