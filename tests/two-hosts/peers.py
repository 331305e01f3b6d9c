"""The other ends that are not ours: a STAMP sender and a reflector whose packets scapy makes and reads, and a relay
that lets packets come twice and out of order. Each runs as a program of its own in one of the hosts:

    peers.py send ADDRESS COUNT           measures a reflector, prints what it found as JSON
    peers.py reflect ADDRESS PORT         answers until it is ended
    peers.py relay ADDRESS PORT TO_PORT   passes on what comes for ADDRESS:PORT, prints what it did when it is ended
"""
import json
import select
import signal
import socket
import sys
import time

PORT = 862
ODD_EACH = 10  # answers: by turns one comes twice and one comes after the next


def make_socket(address, port=0):
    family = socket.AF_INET6 if ":" in address else socket.AF_INET
    made = socket.socket(family, socket.SOCK_DGRAM)
    if port:
        made.bind((address, port))
    return made


def ended(*_):
    raise SystemExit(0)


def send(address, count):
    from scapy.contrib.stamp import STAMPSessionReflectorTestUnauthenticated as Answer
    from scapy.contrib.stamp import STAMPSessionSenderTestUnauthenticated as Request

    line = make_socket(address)
    line.settimeout(2)
    answers, round_trips = [], []
    for number in range(count):
        line.sendto(bytes(Request(seq=number, ssid=7)), (address, PORT))
        sent = time.monotonic()
        try:
            octets, _ = line.recvfrom(2048)
        except TimeoutError:
            continue
        answer = Answer(octets)
        round_trips.append(time.monotonic() - sent - float(answer.ts - answer.ts_rx))
        answers.append({"seq": answer.seq, "seq_sender": answer.seq_sender, "ssid": answer.ssid,
                        "ttl_sender": answer.ttl_sender, "length": len(octets),
                        "delay": float(answer.ts - answer.ts_rx)})
        time.sleep(0.005)
    print(json.dumps({"sent": count, "answers": answers,
                      "round_trip_us": sorted(round_trips)[len(round_trips) // 2] * 1e6 if round_trips else None}))


def reflect(address, port):
    from scapy.contrib.stamp import STAMPSessionReflectorTestUnauthenticated as Answer
    from scapy.contrib.stamp import STAMPSessionSenderTestUnauthenticated as Request

    line = make_socket(address, port)
    counts = {}
    while True:
        octets, peer = line.recvfrom(2048)
        received = time.time()
        request = Request(octets[:44])
        number = counts[peer] = counts.get(peer, -1) + 1
        answer = Answer(seq=number, ssid=request.ssid, ts_rx=ntp(received), seq_sender=request.seq,
                        ts_sender=request.ts, err_estimate_sender=request.err_estimate, ttl_sender=255,
                        ts=ntp(time.time()))
        line.sendto(bytes(answer) + octets[44:], peer)


def ntp(unix):
    return unix + 2208988800


def relay(address, port, to_port):
    near, far = make_socket(address, port), make_socket(address)
    done = {"answers": 0, "twice": 0, "late": 0}
    held = None
    client = None
    try:
        while True:
            for ready in select.select([near, far], [], [])[0]:
                octets, peer = ready.recvfrom(2048)
                if ready is near:
                    client = peer
                    far.sendto(octets, (address, to_port))
                    continue
                done["answers"] += 1
                odd = done["answers"] % ODD_EACH == 0
                if odd and done["twice"] > done["late"]:
                    held = octets
                    done["late"] += 1
                    continue
                near.sendto(octets, client)
                if held:
                    near.sendto(held, client)
                    held = None
                if odd:
                    near.sendto(octets, client)
                    done["twice"] += 1
    finally:
        print(json.dumps(done), flush=True)


if __name__ == "__main__":
    signal.signal(signal.SIGTERM, ended)
    what, arguments = sys.argv[1], [a if not a.isdigit() else int(a) for a in sys.argv[2:]]
    {"send": send, "reflect": reflect, "relay": relay}[what](*arguments)
