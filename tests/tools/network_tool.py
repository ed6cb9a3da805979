"""What the tests of verbs that talk over the network share."""

import re

import tool


def without_noise(words):
    """The library's sockets say on standard error when a connect had to be waited for, which depends on the moment."""
    return re.sub(rb"^Socket::Open\(\) Select returned -?\d+\n", b"", words, flags=re.M)


class NetworkTest(tool.ToolTest):

    def run_tool(self, *arguments, **options):
        result = tool.run(*arguments, **options)
        result.stderr = without_noise(result.stderr)
        return result

    def assert_says(self, arguments, code, output, errors):
        result = self.run_tool(*arguments)
        self.assert_ends(result, code, errors)
        self.assertEqual(result.stdout.decode(), output)
        return result
