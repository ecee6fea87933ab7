"""Hashes of passwords, and texts that nobody guesses."""

import hashlib
import hmac
import secrets

from .wire import to_bytes

_COST, _BLOCKS, _LANES = 1 << 14, 8, 1  # 16 MB of memory, and some hundredths of a second


def hash_password(password: str) -> str:
    salt = secrets.token_bytes(16)
    return f"$scrypt${_COST}${_BLOCKS}${_LANES}${salt.hex()}${_key(password, salt, _COST, _BLOCKS, _LANES).hex()}"


def verify_password(password: str, stored: str) -> bool:
    _, _, cost, blocks, lanes, salt, key = stored.split("$")
    tried = _key(password, bytes.fromhex(salt), int(cost), int(blocks), int(lanes))
    return hmac.compare_digest(tried, bytes.fromhex(key))


def _key(password: str, salt: bytes, cost: int, blocks: int, lanes: int) -> bytes:
    return hashlib.scrypt(to_bytes(password), salt=salt, n=cost, r=blocks, p=lanes, maxmem=1 << 26, dklen=16)


def random_id() -> str:
    return secrets.token_hex(16)
