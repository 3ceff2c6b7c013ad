"""The same read of 8 words with pymodbus, in Modbus ASCII.

Prints {"version": TEXT, "ns": MEDIAN OF SEVERAL ROUNDS} in thread CPU time.
"""

import json
import statistics
import time

import pymodbus.version
from pymodbus.factory import ClientDecoder
from pymodbus.register_read_message import ReadHoldingRegistersRequest
from pymodbus.transaction import ModbusAsciiFramer

STATION = 1
REPLY = b":01031000010002000300040005000600070008C8\r\n"
ROUNDS = 9
EXCHANGES_IN_ROUND = 5000


def exchange(framer, replies):
    request = framer.buildPacket(ReadHoldingRegistersRequest(0x1000, 8, STATION))
    framer.processIncomingPacket(REPLY, replies.append, STATION)
    return request


def check():
    replies = []
    request = exchange(ModbusAsciiFramer(ClientDecoder()), replies)
    assert request == b":010310000008E4\r\n", request
    assert replies[0].registers == [1, 2, 3, 4, 5, 6, 7, 8], replies


def time_of_round():
    framer = ModbusAsciiFramer(ClientDecoder())
    replies = []
    start = time.thread_time_ns()
    for _ in range(EXCHANGES_IN_ROUND):
        exchange(framer, replies)
        replies.clear()
    return (time.thread_time_ns() - start) / EXCHANGES_IN_ROUND


check()
nanoseconds = round(statistics.median(time_of_round() for _ in range(ROUNDS)))
print(json.dumps({"version": pymodbus.version.version.short(), "ns": nanoseconds}))
