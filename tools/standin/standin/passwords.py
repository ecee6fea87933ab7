"""Hashes of passwords, and texts that nobody guesses."""

import hashlib
import hmac
import secrets

from .wire import to_bytes


def hash_password(password: str, salt: str = "") -> str:
    """Salt and key; 4 MB of memory, and a hundredth of a second or two."""
    salt = salt or random_id()
    key = hashlib.scrypt(to_bytes(password), salt=bytes.fromhex(salt), n=1 << 12, r=8, p=1, dklen=16)
    return f"{salt}${key.hex()}"


def verify_password(password: str, stored: str) -> bool:
    return hmac.compare_digest(hash_password(password, stored.partition("$")[0]), stored)


def random_id() -> str:
    return secrets.token_hex(16)
