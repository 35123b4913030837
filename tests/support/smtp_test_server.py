#!/usr/bin/python3
"""A private SMTP server for the mail tests.

Binds 127.0.0.1 on a free port, prints the port on the first line of
standard output and stores every accepted message in DIR as N.eml with its
envelope in N.json. Recipients whose local part starts with "refuse" are
answered 550. Modes: plain, starttls (STARTTLS offered and required before
MAIL) and tls (TLS from the first byte). With --auth, AUTH PLAIN and LOGIN
accept only the fixed test user and MAIL needs a login.
Runs until standard input closes or it is killed.
"""
import argparse
import asyncio
import json
import logging
import os
import ssl
import sys
import warnings

from aiosmtpd.smtp import SMTP, AuthResult, LoginPassword

TEST_USER = b"inviter"
TEST_PASSWORD = b"s3cret-pw"


class Recorder:
    def __init__(self, folder):
        self.folder = folder
        self.count = 0

    async def handle_RCPT(self, server, session, envelope, address, rcpt_options):
        if address.split("@")[0].startswith("refuse"):
            return "550 5.1.1 <%s>: mailbox unavailable" % address
        envelope.rcpt_tos.append(address)
        return "250 OK"

    async def handle_DATA(self, server, session, envelope):
        self.count += 1
        base = os.path.join(self.folder, "%d" % self.count)
        with open(base + ".eml", "wb") as out:
            out.write(envelope.original_content)
        with open(base + ".json", "w") as out:
            json.dump({"from": envelope.mail_from, "to": envelope.rcpt_tos,
                       "tls": server.transport.get_extra_info("ssl_object") is not None,
                       "authenticated": bool(session.authenticated)}, out)
        return "250 Message accepted"


def authenticate(server, session, envelope, mechanism, auth_data):
    ok = (isinstance(auth_data, LoginPassword) and auth_data.login == TEST_USER
          and auth_data.password == TEST_PASSWORD)
    return AuthResult(success=ok, handled=False)


async def main():
    # The test's own login over plain text is on purpose; no warnings about it.
    warnings.simplefilter("ignore")
    logging.getLogger("mail.log").setLevel(logging.ERROR)
    parser = argparse.ArgumentParser()
    parser.add_argument("folder")
    parser.add_argument("--mode", choices=["plain", "starttls", "tls"], default="plain")
    parser.add_argument("--cert")
    parser.add_argument("--key")
    parser.add_argument("--auth", action="store_true")
    args = parser.parse_args()

    context = None
    if args.mode != "plain":
        context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
        context.load_cert_chain(args.cert, args.key)
    recorder = Recorder(args.folder)
    loop = asyncio.get_running_loop()

    def factory():
        return SMTP(recorder, hostname="smtp.test",
                    tls_context=context if args.mode == "starttls" else None,
                    require_starttls=args.mode == "starttls",
                    auth_required=args.auth, auth_require_tls=False,
                    authenticator=authenticate if args.auth else None,
                    loop=loop)

    server = await loop.create_server(
        factory, host="127.0.0.1", port=0,
        ssl=context if args.mode == "tls" else None)
    print(server.sockets[0].getsockname()[1], flush=True)
    # Ends with the test: its end closes our standard input.
    await loop.run_in_executor(None, sys.stdin.read)
    server.close()


asyncio.run(main())
