# A scripted FTP server for the transfer tests: it logs anyone in and answers from a fixed
# scenario (argv[1]) the way a broken or hostile server would. Prints its port first.
#   liste-mlsd   MLSD with traversal names, control characters and a folder with attributes 48
#   liste-unix   no MLSD; Unix LIST lines from several servers
#   liste-windows no MLSD; IIS LIST lines
#   reponse-sans-fin  a greeting that never ends
#   silence           accepts the connection and never says a word
#   passif-seulement  refuses active mode (PORT, EPRT)
#   liste-sans-fin    a listing that never ends
#   echo-secret       logs in, then refuses every folder quoting the password it was given
import socket
import sys
import threading

scenario = sys.argv[1]

MLSD = [
    "type=cdir;modify=20261101120000; .",
    "type=pdir;modify=20261101120000; ..",
    "type=file;size=10;modify=20261101120000; ok.txt",
    "type=file;size=5;modify=20261101120000; ../evil1.txt",
    "type=file;size=5;modify=20261101120000; ..\\evil2.txt",
    "type=file;size=5;modify=20261101120000; C:evil3.txt",
    "type=file;size=5;modify=20261101120000; sub/evil4.txt",
    "type=file;size=5;modify=20261101120000; bad\x01name.txt",
    "type=file;size=5;modify=20261101120000; ..",
    "type=dir;win32.ea=0x30;modify=20261101120000; dir48",
    "type=dir;modify=20261101120000; plaindir",
]
UNIX = [
    "total 12",
    "drwxr-xr-x   2 ftp      ftp          4096 Nov  1 12:00 .",
    "drwxr-xr-x   3 ftp      ftp          4096 Nov  1 12:00 ..",
    "drwxr-xr-x   2 1000     1000         4096 Oct 30 08:15 jingles",
    "-rw-r--r--   1 ftp      ftp          1234 Mar  5  2024 my file.txt",
    "-r--r--r--   1 owner    group          77 Nov  1 12:00 lecture-seule.txt",
    "-rw-r--r--   1 ftp           10 Nov  1 12:00 sans-groupe.txt",
    "lrwxrwxrwx   1 ftp      ftp            10 Nov  1 12:00 lien -> jingles",
    "this line is no listing",
]
WINDOWS = [
    "11-01-26  12:00PM       <DIR>          jingles",
    "03-05-24  09:41AM                 1234 my file.txt",
    "11-01-2026  01:05AM                 10 quatre-chiffres.txt",
]


def contenu(nom):
    return b"x" * (10 if nom.endswith("ok.txt") else 5)


def repondre(c, ligne):
    c.sendall((ligne + "\r\n").encode("latin-1"))


def donnees(c, etat):
    if etat.get("pasv"):
        d, _ = etat.pop("pasv").accept()
        return d
    if etat.get("port"):
        return socket.create_connection(etat.pop("port"), timeout=30)
    return None


def session(c):
    f = c.makefile("rb")
    if scenario == "silence":
        f.read()
        return
    if scenario == "reponse-sans-fin":
        try:
            while True:
                repondre(c, "220-bienvenue " + "x" * 60)
        except OSError:
            return
    repondre(c, "220 pret")
    etat = {}
    for brut in f:
        ligne = brut.decode("latin-1").rstrip("\r\n")
        verbe, _, arg = ligne.partition(" ")
        verbe = verbe.upper()
        if verbe == "USER":
            repondre(c, "331 mot de passe")
        elif verbe == "PASS":
            etat["secret"] = arg
            repondre(c, "230 ok")
        elif verbe == "PWD":
            repondre(c, '257 "/" est le dossier')
        elif verbe == "FEAT":
            if scenario == "liste-mlsd" or scenario == "liste-sans-fin":
                repondre(c, "211-Extensions")
                repondre(c, " MLST type*;size*;modify*;")
                repondre(c, "211 fin")
            else:
                repondre(c, "500 inconnu")
        elif verbe == "CWD" and scenario == "echo-secret":
            repondre(c, "550 dossier refuse (mot de passe " + etat.get("secret", "") + ")")
        elif verbe in ("TYPE", "CWD", "MODE", "STRU"):
            repondre(c, "200 ok")
        elif verbe == "EPSV":
            s = socket.socket()
            s.bind(("127.0.0.1", 0))
            s.listen(1)
            s.settimeout(30)
            etat["pasv"] = s
            repondre(c, "229 passif (|||%d|)" % s.getsockname()[1])
        elif verbe == "PASV":
            s = socket.socket()
            s.bind(("127.0.0.1", 0))
            s.listen(1)
            s.settimeout(30)
            etat["pasv"] = s
            p = s.getsockname()[1]
            repondre(c, "227 passif (127,0,0,1,%d,%d)" % (p // 256, p % 256))
        elif verbe in ("EPRT", "PORT") and scenario == "passif-seulement":
            repondre(c, "500 mode actif refuse")
        elif verbe == "EPRT":
            parts = arg.split(arg[0])
            etat["port"] = (parts[2], int(parts[3]))
            repondre(c, "200 ok")
        elif verbe == "PORT":
            n = arg.split(",")
            etat["port"] = (".".join(n[:4]), int(n[4]) * 256 + int(n[5]))
            repondre(c, "200 ok")
        elif verbe in ("MLSD", "LIST", "NLST"):
            repondre(c, "150 liste")
            d = donnees(c, etat)
            try:
                if scenario == "liste-sans-fin":
                    while True:
                        d.sendall(b"type=file;size=1; f" + b"x" * 200 + b"\r\n")
                lignes = MLSD if verbe == "MLSD" else (WINDOWS if scenario == "liste-windows" else UNIX)
                d.sendall(("\r\n".join(lignes) + "\r\n").encode("latin-1"))
                d.close()
                repondre(c, "226 fin")
            except OSError:
                pass
        elif verbe == "RETR":
            nom = arg.rsplit("/", 1)[-1]
            if "dir48" in arg or "plaindir" in arg:
                repondre(c, "550 " + nom + ": is a directory")
                etat.pop("pasv", None)
                continue
            repondre(c, "150 envoi")
            d = donnees(c, etat)
            d.sendall(contenu(nom))
            d.close()
            repondre(c, "226 fin")
        elif verbe == "SIZE":
            repondre(c, "213 %d" % len(contenu(arg)))
        elif verbe == "QUIT":
            repondre(c, "221 au revoir")
            break
        else:
            repondre(c, "502 non")
    c.close()


ecoute = socket.socket()
ecoute.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEADDR, 1)
ecoute.bind(("127.0.0.1", 0))
ecoute.listen(8)
print(ecoute.getsockname()[1], flush=True)
while True:
    client, _ = ecoute.accept()
    threading.Thread(target=session, args=(client,), daemon=True).start()
