#!/usr/bin/python3
"""Writes the benchmark CSV: 10 columns (id, category key with ~1,000 values, first and last
name, city, ISO date, amount with 2 decimals, quantity, a 20-60 character comment with commas
and quotes, a boolean), about 104 bytes a row. Same seed, same file."""

import datetime
import random
import sys

FIRST = ["James", "Mary", "John", "Patricia", "Robert", "Jennifer", "Michael", "Linda",
         "William", "Elizabeth", "David", "Barbara", "Richard", "Susan", "Joseph", "Jessica",
         "Thomas", "Sarah", "Charles", "Karen", "Ana", "Li", "Olga", "Pierre", "Yuki", "Omar"]
LAST = ["Smith", "Johnson", "Williams", "Brown", "Jones", "Garcia", "Miller", "Davis",
        "Rodriguez", "Martinez", "Hernandez", "Lopez", "Wilson", "Anderson", "Taylor",
        "Thomas", "Moore", "Jackson", "Martin", "Lee", "Nguyen", "Kowalski", "Dubois"]
CITIES = ["London", "Paris", "Berlin", "Madrid", "Rome", "Vienna", "Oslo", "Lisbon",
          "Dublin", "Prague", "Warsaw", "Athens", "Helsinki", "Zurich", "Brussels",
          "Amsterdam", "Copenhagen", "Stockholm", "Budapest", "Edinburgh"]
WORDS = ["fast", "delivery", "good", "price", "late", "box", "damaged", "great", "item",
         "would", "buy", "again", "colour", "wrong", "size", "ok", "thanks", "refund",
         "as", "described", "quality", "poor", "excellent", "service"]


def comment(rng):
    target = rng.randint(20, 60)
    words = []
    length = 0
    while length < target:
        word = rng.choice(WORDS)
        roll = rng.random()
        if roll < 0.15:
            word = '"' + word + '"'
        elif roll < 0.35:
            word += ","
        words.append(word)
        length += len(word) + 1
    text = " ".join(words)[:target].rstrip(",")
    return '"' + text.replace('"', '""') + '"'


def main():
    rows = int(sys.argv[1]) if len(sys.argv) > 1 else 1000000
    path = sys.argv[2] if len(sys.argv) > 2 else "/tmp/tabulon_bench.csv"
    rng = random.Random(20261122)
    start = datetime.date(2015, 1, 1)
    with open(path, "w", newline="") as out:
        out.write("id,key,first_name,last_name,city,date,amount,quantity,comment,flag\n")
        lines = []
        for i in range(1, rows + 1):
            date = start + datetime.timedelta(days=rng.randrange(3650))
            lines.append("%d,CAT-%04d,%s,%s,%s,%s,%.2f,%d,%s,%s\n" % (
                i, rng.randrange(1000), rng.choice(FIRST), rng.choice(LAST),
                rng.choice(CITIES), date.isoformat(), rng.uniform(0, 1000),
                rng.randint(1, 50), comment(rng), rng.choice(("true", "false"))))
            if len(lines) == 10000:
                out.writelines(lines)
                lines = []
        out.writelines(lines)
    print(path)


if __name__ == "__main__":
    main()
